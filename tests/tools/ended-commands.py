#!/usr/bin/env python3
"""Ends the commands that look for faults at random moments, by signals, closed pipes and full disks.

    ended-commands.py ORVLOG_RECORD ORVLOG [COMMAND...]

Whenever the end comes, a file that is there is whole, the temporary folder is empty, no process goes on, and the status
tells of the signal. ORVLOG_KILLS tells how often each command is ended, ORVLOG_SEED when.
"""

import os
import pathlib
import random
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time

RECORD, ORVLOG = map(os.path.abspath, sys.argv[1:3])
ROOT = pathlib.Path(__file__).resolve().parents[2]
SAMPLE = ROOT / 'docs' / 'sample.pdf'
KILLS = int(os.environ.get('ORVLOG_KILLS', '4'))
SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)
LONGEST = 120
# What a command that was broken off leaves on purpose.
MEMORY = '.minimise'
failures = []


def expect(condition, what):
    if not condition:
        failures.append(what)
        print('FAILED: ' + what, flush=True)
    return condition


def session_of(process):
    """The processes of a session that have not ended."""
    found = []
    for folder in pathlib.Path('/proc').glob('[0-9]*'):
        try:
            words = (folder / 'stat').read_text().rsplit(')', 1)[1].split()
        except OSError:
            continue
        if int(words[3]) == process and words[0] != 'Z':
            found.append(folder.name)
    return found


class Commands:
    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.jobs = self.folder / 'jobs'
        self.temporary = self.folder / 'tmp'
        self.jobs.mkdir()
        self.temporary.mkdir()
        log = self.jobs / 'job.xml'
        subprocess.run([RECORD, SAMPLE, '-o', log, '--mode', 'base', '--images-beside', 'job'], check=True,
                       capture_output=True)
        text = log.read_bytes()
        (self.jobs / 'other.xml').write_bytes(text.replace(b'op_Operator="3"', b'op_Operator="12"', 40))
        (self.jobs / 'begun.xml').write_bytes(text[:len(text) // 2])
        subprocess.run([ORVLOG, 'pack', log, '-o', self.jobs / 'job.orvz'], check=True, capture_output=True)

    def words(self, command, out):
        job, other = str(self.jobs / 'job.xml'), str(self.jobs / 'other.xml')
        return {
            'at': ['at', job, '--page', '2', '200,200'],
            'state': ['state', job, '40', '--clip-png', out + '/clip.png'],
            'diff': ['diff', job, other],
            'pixels': ['diff', job, other, '--pixels', '--png', out],
            'trim': ['trim', job, '--pages', '1-', '-o', out + '/new.xml'],
            'minimise': ['minimise', job, '--while', 'sleep 0.05; grep -q GOP_OPERAND_GRAD_RADIAL', '--limit', '12',
                         '-o', out + '/least.xml'],
            'redact': ['redact', str(self.jobs / 'job.orvz'), '--files-from', str(self.jobs), '-o', out + '/red.xml',
                       '--list', out + '/list.txt'],
            'report': ['report', job, '-o', out + '/report.html'],
            'reports': ['report', job, other, '--pages', '1', '-o', out + '/report.html'],
            'follow': ['ls', str(self.jobs / 'begun.xml'), '--follow'],
        }[command]

    def start(self, command, out, **more):
        out.mkdir()
        return subprocess.Popen([ORVLOG, *self.words(command, str(out))], start_new_session=True,
                                env=dict(os.environ, TMPDIR=str(self.temporary)), **more)

    def whole(self, command):
        """What the command writes if nobody ends it, its status, and how long it takes."""
        out = self.folder / (command + '-whole')
        begun = time.monotonic()
        process = self.start(command, out, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                             stderr=subprocess.PIPE)
        _, said = process.communicate(timeout=LONGEST)
        expect(process.returncode in (0, 1), '%s ends with %d: %s' % (command, process.returncode, said[-300:]))
        return out, process.returncode, time.monotonic() - begun

    def look(self, what, command, out, whole, process):
        """What is there once the command has ended."""
        expect(not session_of(process.pid), '%s: processes go on' % what)
        left = sorted(file.name for file in self.temporary.iterdir())
        expect(not left, '%s: leaves %s in the temporary folder' % (what, left))
        for file in sorted(out.rglob('*')):
            same = whole / file.relative_to(out)
            if file.is_dir() or file.name.endswith(MEMORY):
                continue
            if expect(same.exists(), '%s: leaves %s' % (what, file.name)):
                expect(file.read_bytes() == same.read_bytes(), '%s: %s is not whole' % (what, file.name))
        shutil.rmtree(out)
        out.mkdir()
        out.rmdir()

    def by_signal(self, command, whole, status, takes, moments):
        for i in range(KILLS):
            number = SIGNALS[i % len(SIGNALS)]
            what = '%s, %s' % (command, signal.Signals(number).name)
            out = self.folder / 'out'
            process = self.start(command, out, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                 stderr=subprocess.DEVNULL)
            time.sleep(takes * moments.random())
            process.send_signal(number)
            try:
                process.wait(LONGEST)
            except subprocess.TimeoutExpired:
                expect(False, '%s: goes on' % what)
                process.kill()
                process.wait()
            ends = (-number, 128 + number) if command == 'follow' else (-number, 128 + number, status)
            expect(process.returncode in ends, '%s: status %d' % (what, process.returncode))
            self.look(what, command, out, whole, process)

    def by_closed_pipe(self, command, whole, moments):
        """Nobody reads what the command prints, after so many bytes."""
        for most in (0, moments.randrange(1, 200)):
            what = '%s, closed pipe' % command
            out = self.folder / 'out'
            process = self.start(command, out, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                 stderr=subprocess.DEVNULL)
            process.stdout.read(most)
            process.stdout.close()
            process.wait(LONGEST)
            expect(process.returncode in (0, 1, -signal.SIGPIPE, 128 + signal.SIGPIPE),
                   '%s: status %d' % (what, process.returncode))
            self.look(what, command, out, whole, process)

    def by_full_disk(self, command, whole):
        """No file grows beyond so many bytes; of pictures some have room, and what is temporary has."""
        most = 32000 if command == 'pixels' else 1000

        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (most, most))

        what = '%s, full disk' % command
        out = self.folder / 'out'
        process = self.start(command, out, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                             stderr=subprocess.PIPE, preexec_fn=limit)
        _, said = process.communicate(timeout=LONGEST)
        expect(process.returncode == 1 and said, '%s: status %d, says %s' % (what, process.returncode, said))
        expect(b'File too large' in said or b'no room' in said, '%s: says %s' % (what, said))
        self.look(what, command, out, whole, process)


def main():
    moments = random.Random(int(os.environ.get('ORVLOG_SEED', '1')))
    chosen = sys.argv[3:] or ['at', 'state', 'diff', 'pixels', 'trim', 'minimise', 'redact', 'report', 'reports', 'follow']
    with tempfile.TemporaryDirectory() as folder:
        commands = Commands(folder)
        for command in chosen:
            begun = time.monotonic()
            if command == 'follow':
                whole, status, takes = commands.folder / 'none', 0, 0.5
            else:
                whole, status, takes = commands.whole(command)
            commands.by_signal(command, whole, status, takes, moments)
            if command in ('at', 'diff', 'pixels', 'follow'):
                commands.by_closed_pipe(command, whole, moments)
            if command in ('state', 'pixels', 'trim', 'minimise', 'redact', 'report'):
                commands.by_full_disk(command, whole)
            print('%-9s %5.1f s' % (command, time.monotonic() - begun), flush=True)
    print('%d failures' % len(failures))
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
