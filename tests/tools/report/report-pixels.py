#!/usr/bin/env python3
"""Holds the report's list of what changed a pixel against that of `orvlog at`, at random pixels of documents.

    report-pixels.py ORVLOG_RECORD ORVLOG PIXELS DOCUMENT...

PIXELS are so many of each document, one after the other on its pages: half of them anywhere, half where something was
drawn. ORVLOG_SEED takes others.
"""

import json
import os
import pathlib
import random
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import report_reader  # noqa: E402

MOST_PAGES = 3


def at(orvlog, log, page, x, y):
    done = subprocess.run([orvlog, 'at', log, '--page', str(page), f'{x},{y}', '--json'], capture_output=True, timeout=300)
    return [entry for entry in json.loads(done.stdout)['calls'] if entry['changed']]


def shown(calls, entry):
    """What the list of a report has of an entry, as `orvlog at` tells it."""
    name = lambda call: calls[call]['address'] if call >= 0 else '-'
    of = name(entry['by']) if entry['kind'] != report_reader.PAINTED else None
    return (name(entry['call']), of, tuple(name(call) for call in entry['in']), entry['before'], entry['after'])


def told(entry):
    return (entry['call'], entry['of'], tuple(entry['in']), entry['before'], entry['after'])


def pick(random_numbers, page, steps):
    drawn = [i for i in range(steps.count) if steps.table['pixels'][i] > 0 and steps.table['surface'][i] == 0]
    if drawn and random_numbers.random() < 0.5:
        y, x, colours = random_numbers.choice(steps.runs[random_numbers.choice(drawn)])
        return x + random_numbers.randrange(len(colours)), y
    return random_numbers.randrange(page['width']), random_numbers.randrange(page['height'])


def check(orvlog, log, report_file, count, random_numbers):
    report = report_reader.Report(report_file)
    calls = report.calls()
    pages = report.index['logs'][0]['pages']
    failures = entries = 0
    for i in range(count):
        page = pages[i * len(pages) // count]
        if i == 0 or page is not pages[(i - 1) * len(pages) // count]:
            steps = report_reader.Steps(report, page)
        x, y = pick(random_numbers, page, steps)
        ours = [shown(calls, entry) for entry in steps.at(x, y)]
        theirs = [told(entry) for entry in at(orvlog, log, page['page'], x, y)]
        entries += len(theirs)
        if ours != theirs:
            failures += 1
            print(f'FAILED: {log}, page {page["page"]}, pixel {x},{y}\n  report {ours}\n  at     {theirs}')
    return failures, entries


def main():
    record, orvlog, count = sys.argv[1], sys.argv[2], int(sys.argv[3])
    random_numbers = random.Random(int(os.environ.get('ORVLOG_SEED', '1')))
    failures = 0
    for document in sys.argv[4:]:
        with tempfile.TemporaryDirectory() as folder:
            log = os.path.join(folder, 'job.xml')
            subprocess.run([record, document, '-o', log, '--pages', f'1-{MOST_PAGES}'], check=True, capture_output=True)
            report = os.path.join(folder, 'job.html')
            subprocess.run([orvlog, 'report', log, '-o', report], check=True)
            failed, entries = check(orvlog, log, report, count, random_numbers)
            failures += failed
            print(f'{pathlib.Path(document).name}: {count} pixels, {entries} changes, {failed} differ', flush=True)
    return 1 if failures else 0


sys.exit(main())
