#!/usr/bin/env python3
"""Plants faults of all kinds in the log of the sample document, one at a time, and lets `orvlog diff` find each: the
call, the attribute, and the call behind which the pages differ.

    diff-faults.py ORVLOG_RECORD ORVLOG SAMPLE
"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile

RECORD, ORVLOG, SAMPLE = sys.argv[1:4]
PLANT = pathlib.Path(__file__).parent / 'planted-faults.py'

# Which of the calls that a fault can be done to: those where it can be seen, where the one in the middle can't.
PICKS = {'operator': ['--id', '70']}
failures = []


def expect(condition, what):
    if not condition:
        failures.append(what)
        print('FAILED: ' + what)


def run(*words):
    return subprocess.run([ORVLOG, *words], capture_output=True, text=True, errors='replace', timeout=300)


def diff(*words):
    done = run('diff', '--json', *words)
    try:
        return done.returncode, json.loads(done.stdout)
    except ValueError:
        expect(False, 'diff %s: %s%s' % (' '.join(words), done.stdout[:300], done.stderr))
        return done.returncode, {'calls': [], 'pages': [], 'same': 0}


def plant(log, kind, out, *more):
    done = subprocess.run([sys.executable, PLANT, log, kind, out, *more], capture_output=True, text=True, check=True)
    return done.stdout.rstrip('\n').split('\t')


def check_calls(kind, told, found, calls):
    """That exactly the planted call is named, with its attribute."""
    a, b, path, attribute = told
    expect(found['same'] == calls - (kind != 'twice'), '%s: %d calls are the same' % (kind, found['same']))
    expect(len(found['calls']) == 1, '%s: one call differs: %s' % (kind, found['calls']))
    for call in found['calls'][:1]:
        what = {'drop': 'missing', 'twice': 'added', 'swap': 'moved'}.get(kind, 'changed')
        expect(call['what'] == what, '%s: %s' % (kind, call['what']))
        expect(call['b'] == (None if b == '-' else b), '%s: %s is %s in the other log' % (kind, call['b'], b))
        if kind == 'twice':
            expect(call['twice'], 'twice: told')
            continue
        expect(call['a'] == a, '%s: %s is %s' % (kind, call['a'], a))
        if what != 'changed':
            continue
        expect(len(call['differences']) == 1, '%s: one difference' % kind)
        one = call['differences'][0]
        expect((one['attribute'] or '-') == attribute, '%s: %s is %s' % (kind, one['attribute'], attribute))
        bare = '/'.join(step.split('[')[0] for step in one['path'].split('/') if step)
        expect(bare.startswith('' if path == '.' else path), '%s: %s is %s' % (kind, bare, path))


def check_pages(kind, told, found, differ):
    expect(bool(found['pages']) == differ, '%s: pages differ: %s, and diff says %s' % (kind, differ, found['pages']))
    for page in found['pages'][:1]:
        named = {page['cause']['a'], page['cause']['b']}
        expect(told[0] in named or told[1] in named, '%s: %s is named, not %s' % (kind, named, told[:2]))
        expect(page['first']['pixels'] > 0, '%s: pixels differ' % kind)
        expect(len(page['pictures']) >= 3 and all(os.path.getsize(name) > 0 for name in page['pictures']),
               '%s: pictures' % kind)


def page_bytes(log, folder):
    subprocess.run([ORVLOG, 'replay', log, '--png', folder], capture_output=True, check=True)
    return {int(file.stem[-3:]): file.read_bytes() for file in pathlib.Path(folder).glob('*.png')}


def main():
    kinds = subprocess.run([sys.executable, PLANT, '--kinds'], capture_output=True, text=True, check=True)
    with tempfile.TemporaryDirectory() as folder:
        log = os.path.join(folder, 'sample.xml')
        subprocess.run([RECORD, SAMPLE, '-o', log], capture_output=True, check=True)
        good_pages = page_bytes(log, os.path.join(folder, 'good'))
        status, found = diff(log, log, '--pixels')
        calls = found['same']
        expect(status == 0 and found['equal'] and calls > 200, 'a log is the same as itself')
        for kind in kinds.stdout.split():
            bad = os.path.join(folder, 'bad.xml')
            told = plant(log, kind, bad, *PICKS.get(kind, []))
            status, found = diff(log, bad, '--pixels', '--png', os.path.join(folder, 'pictures'))
            if kind == 'renumber':
                expect(status == 0 and found['equal'], 'other numbers for the same things are no difference')
                continue
            expect(status == 1 and not found['equal'], '%s: status %d' % (kind, status))
            check_calls(kind, told, found, calls)
            pages = page_bytes(bad, os.path.join(folder, 'bad-' + kind))
            # Two calls in another order may leave the same page at the end.
            check_pages(kind, told, found, pages != good_pages or kind == 'swap')
            against = run('diff', bad, '--against', os.path.join(folder, 'good'))
            expect(against.returncode == (1 if pages != good_pages else 0), '%s: --against %s' % (kind, against.stdout))
    print('%d kinds of faults, %d failures' % (len(kinds.stdout.split()), len(failures)))
    return 1 if failures else 0


sys.exit(main())
