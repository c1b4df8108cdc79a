#!/usr/bin/env python3
"""The memory of diff, trim and redact doesn't go with the log: of two logs, one ten times as long as the other, each
takes as much, but for a little.

    command-memory.py ORVLOG_RECORD ORVLOG [SMALLER [LARGER]]

SMALLER and LARGER are about how many MB the logs have.
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile

RECORD, ORVLOG = map(os.path.abspath, sys.argv[1:3])
SIZES = [int(word) for word in sys.argv[3:]] or [5, 50]
SAMPLE = pathlib.Path(__file__).resolve().parents[2] / 'docs' / 'sample.pdf'
MOST_KILOBYTES = 6 * 1024
failures = 0


def peak(*words):
    """Kilobytes that the command had in memory at most."""
    process = subprocess.Popen([ORVLOG, *map(str, words)], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    said = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode not in (0, 1) or (process.returncode == 1 and words[0] != 'diff'):
        raise SystemExit('%s: status %d: %s' % (words[0], process.returncode, said.decode()))
    return usage.ru_maxrss


def make_logs(log, megabytes, name):
    """The first page of a log again and again, with numbers that go on; and the same with one operator changed."""
    text = log.read_bytes()
    begin = text.index(b'  <ORV_face_start')
    end = text.index(b'  <ORV_face_start', begin + 1)
    page = text[begin:end]
    paints = len(re.findall(rb'<ORV_object_paint[a-z_]* id=', page))
    one, other = log.with_name(name + '.xml'), log.with_name(name + '-other.xml')
    with open(one, 'wb') as a, open(other, 'wb') as b:
        for file in (a, b):
            file.write(text[:begin])
        count = max(2, megabytes * 1000000 // len(page))
        for i in range(count):
            again = re.sub(rb'(<ORV_object_paint[a-z_]* id=)"(\d+)"',
                           lambda found: b'%s"%d"' % (found[1], int(found[2]) + i * paints), page)
            again = again.replace(b'face_seq_number="1"', b'face_seq_number="%d"' % (i + 1))
            a.write(again)
            b.write(again.replace(b'op_Operator="3"', b'op_Operator="12"', 1) if i == count // 2 else again)
        for file in (a, b):
            file.write(text[text.index(b'  <ORV_document_finish'):])
    return one, other


def main():
    global failures
    with tempfile.TemporaryDirectory() as folder:
        log = pathlib.Path(folder) / 'job.xml'
        subprocess.run([RECORD, SAMPLE, '-o', log, '--stream', 'file'], check=True, capture_output=True)
        taken = {}
        for size in SIZES:
            one, other = make_logs(log, size, 'log-%d' % size)
            new = pathlib.Path(folder) / 'new.xml'
            taken[size] = {'diff': peak('diff', one, other), 'trim': peak('trim', one, '--pages', '1-', '-o', new),
                           'redact': peak('redact', one, '-o', new)}
            print('%3d MB: %s' % (one.stat().st_size // 1000000, ', '.join(
                '%s %d KB' % pair for pair in taken[size].items())), flush=True)
        for command in taken[SIZES[0]]:
            more = taken[SIZES[-1]][command] - taken[SIZES[0]][command]
            if more > MOST_KILOBYTES:
                failures += 1
                print('FAILED: %s takes %d KB more' % (command, more))
    print('%d failures' % failures)
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
