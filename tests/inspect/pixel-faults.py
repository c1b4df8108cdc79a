#!/usr/bin/env python3
"""Plants faults of all kinds in the log of the sample document, one at a time, takes a pixel in which the pages differ,
and lets each command that looks for faults name the call: `at`, `diff`, `diff --pixels`, and for some `minimise`.

    pixel-faults.py ORVLOG_RECORD ORVLOG SAMPLE [--minimise-all] [KIND...]
    pixel-faults.py --is ORVLOG LOG PAGE X Y COLOUR

The second form draws LOG and succeeds if the pixel of that page has this colour, as six hexadecimal digits.
"""

import json
import pathlib
import re
import shlex
import struct
import subprocess
import sys
import tempfile
import time
import zlib

HERE = pathlib.Path(__file__)
PLANT = HERE.parent / 'planted-faults.py'

# Which of the calls that a fault can be done to: those where it can be seen, where the one in the middle can't.
PICKS = {
    'clip-rule': ['--id', '67'],
    'edge-flag': ['--id', '5'],
    'image-row': ['--id', '141'],
    'operator': ['--id', '4'],
    'operator-type': ['--id', '4'],
    'swap': ['--id', '3'],
    'winding': ['--id', '26'],
}
# Kinds that are not to be seen on the sample's pages, whichever call they are done to.
UNSEEN = {'cap', 'dash', 'font-size', 'join', 'object-type', 'page-size', 'text', 'ticket'}
# Kinds that change no pixel, but how many there are.
PAGE = ('page-size',)
GROUPS = ('group-type', 'knockout')
MINIMISED = ('alpha', 'image-matrix')
MOST_CALLS = 20
failures = []


def expect(condition, what):
    if not condition:
        failures.append(what)
        print('FAILED: ' + what)
    return condition


class Png:
    """A picture of 8-bit colours without alpha, decoded row by row, as far as is asked for."""

    def __init__(self, path):
        data = pathlib.Path(path).read_bytes()
        self.width, self.height, depth, colours = struct.unpack('>IIBB', data[16:26])
        assert (depth, colours) == (8, 2), path
        packed, at = b'', 8
        while at < len(data):
            size, = struct.unpack('>I', data[at:at + 4])
            if data[at + 4:at + 8] == b'IDAT':
                packed += data[at + 8:at + 8 + size]
            at += size + 12
        self.filtered = zlib.decompress(packed)
        self.rows = []

    def row(self, y):
        stride = 3 * self.width
        while len(self.rows) <= y:
            at = len(self.rows) * (stride + 1)
            above = self.rows[-1] if self.rows else bytes(stride)
            self.rows.append(unfiltered(self.filtered[at], bytearray(self.filtered[at + 1:at + 1 + stride]), above))
        return self.rows[y]

    def colour(self, x, y):
        return self.row(y)[3 * x:3 * x + 3].hex()


def unfiltered(kind, row, above):
    if kind == 2:
        return bytes((a + b) & 255 for a, b in zip(row, above))
    for i in range(len(row)) if kind else ():
        left = row[i - 3] if i >= 3 else 0
        corner = above[i - 3] if i >= 3 else 0
        if kind == 4:
            guess = left + above[i] - corner
            off = [(abs(guess - left), 0, left), (abs(guess - above[i]), 1, above[i]), (abs(guess - corner), 2, corner)]
            row[i] = (row[i] + min(off)[2]) & 255
        else:
            row[i] = (row[i] + (left if kind == 1 else (left + above[i]) // 2)) & 255
    return bytes(row)


def pages(orvlog, log, folder):
    subprocess.run([orvlog, 'replay', log, '--png', folder], capture_output=True, check=True, timeout=300)
    return {int(file.stem[-3:]): file for file in sorted(pathlib.Path(folder).glob('*-[0-9][0-9][0-9].png'))}


def is_colour(orvlog, log, page, x, y, colour):
    with tempfile.TemporaryDirectory() as folder:
        files = pages(orvlog, log, folder)
        picture = Png(files[int(page)]) if int(page) in files else None
        inside = picture is not None and int(x) < picture.width and int(y) < picture.height
        return inside and picture.colour(int(x), int(y)) == colour


def differing_pixel(good, bad):
    """(page, x, y, colour in the good log, in the bad one), of a pixel that is white in neither if there is one."""
    fallback = None
    for page in good:
        if page not in bad or good[page].read_bytes() == bad[page].read_bytes():
            continue
        one, other = Png(good[page]), Png(bad[page])
        for y in range(min(one.height, other.height)):
            a, b = one.row(y), other.row(y)
            if a == b:
                continue
            for x in range(min(one.width, other.width)):
                at = slice(3 * x, 3 * x + 3)
                if a[at] == b[at]:
                    continue
                found = (page, x, y, a[at].hex(), b[at].hex())
                if b[at] != b'\xff\xff\xff':
                    return found
                fallback = fallback or found
    return fallback


class Faults:
    def __init__(self, record, orvlog, sample, folder):
        self.orvlog = orvlog
        self.folder = pathlib.Path(folder)
        self.minimise_all = False
        self.log = str(self.folder / 'sample.xml')
        self.bad = str(self.folder / 'bad.xml')
        subprocess.run([record, sample, '-o', self.log], capture_output=True, check=True, timeout=300)
        self.pages = pages(orvlog, self.log, self.folder / 'good')

    def run(self, *words):
        return subprocess.run([self.orvlog, *words], capture_output=True, text=True, errors='replace', timeout=300)

    def json(self, *words):
        done = self.run(*words)
        try:
            return json.loads(done.stdout)
        except ValueError:
            expect(False, '%s: %s%s' % (' '.join(words), done.stdout[:300], done.stderr))
            return {'calls': [], 'pages': []}

    def at(self, kind, told, pixel):
        """That `at` names the planted call. A pixel that it only reaches in the good log is named there."""
        page, x, y = pixel[:3]
        log, call = (self.log, told[0]) if kind in ('drop', 'resource-step') else (self.bad, told[1])
        found = self.json('at', log, '--page', str(page), '%d,%d' % (x, y), '--json')
        # A group without a layer of its own changes nothing at its end, but is named as what stands around others.
        named = any(call in (touch['call'], touch['of'], *(touch['in'] if kind in GROUPS else ())) for touch in found['calls'])
        return expect(named, '%s: at names %s at %d,%d of page %d: %s' % (
            kind, call, x, y, page, [touch['call'] for touch in found['calls']]))

    def diff(self, kind, told):
        found = self.json('diff', self.log, self.bad, '--json', '--pixels')
        calls = [(call['a'], call['b']) for call in found['calls']]
        wanted = {'twice': (told[1],), 'drop': (told[0],)}.get(kind, (told[0], told[1]))
        listed = len(calls) == 1 and set(wanted) & set(calls[0])
        expect(listed, '%s: diff names %s: %s' % (kind, wanted, calls))
        causes = [{page['cause']['a'], page['cause']['b']} for page in found['pages']]
        return bool(listed), bool(causes) and bool(set(wanted) & causes[0]), causes

    def minimise(self, kind, told, pixel):
        page, x, y, _, colour = pixel
        out = self.folder / (kind + '-least.xml')
        trial = [sys.executable, '-B', str(HERE), '--is', self.orvlog]
        command = ' '.join(map(shlex.quote, trial)) + ' {} %d %d %d %s' % (page, x, y, colour)
        done = self.run('minimise', self.bad, '--while', command, '-o', str(out))
        if not expect(done.returncode == 0, '%s: minimise: %s' % (kind, done.stderr)):
            return '-'
        changed = pathlib.Path(self.bad).read_text('latin1').split('\n')
        good = set(pathlib.Path(self.log).read_text('latin1').split('\n'))
        planted = re.findall(' %s="[^"]*"' % re.escape(told[3]), ''.join(line for line in changed if line not in good))
        calls = int(re.search(r'^(\d+) of', done.stderr, re.M).group(1))
        expect(calls <= MOST_CALLS, '%s: minimise leaves %d calls' % (kind, calls))
        if kind in MINIMISED:
            expect(planted and planted[0] in out.read_text('latin1'), '%s: minimise keeps%s' % (kind, planted))
        expect(is_colour(self.orvlog, out, page, x, y, colour), '%s: minimise keeps the pixel' % kind)
        return '%d calls' % calls

    def look(self, kind):
        begun = time.monotonic()
        words = [sys.executable, '-B', PLANT, self.log, kind, self.bad, *PICKS.get(kind, [])]
        told = subprocess.run(words, capture_output=True, text=True, check=True).stdout.rstrip('\n').split('\t')
        bad = pages(self.orvlog, self.bad, self.folder / ('bad-' + kind))
        pixel = differing_pixel(self.pages, bad)
        listed, first, causes = self.diff(kind, told)
        row = ['-', 'yes' if listed else 'NO', '-', '-']
        if pixel:
            row[0] = 'yes' if self.at(kind, told, pixel) else 'NO'
            row[2] = 'yes' if expect(first, '%s: diff --pixels names it: %s' % (kind, causes)) else 'NO'
        elif kind not in PAGE:
            expect(not causes, '%s: no pixel differs, and diff --pixels names %s' % (kind, causes))
        expect((pixel is None) == (kind in UNSEEN), '%s: %s' % (kind, 'is seen' if pixel else 'is not seen'))
        if pixel and (kind in MINIMISED or self.minimise_all):
            row[3] = self.minimise(kind, told, pixel)
        where = '%d,%d of %d' % (pixel[1], pixel[2], pixel[0]) if pixel else '-'
        print('%-16s %-9s %-13s %-5s %-5s %-7s %-9s %5.1f s' % (
            kind, told[1] if told[1] != '-' else told[0], where, *row, time.monotonic() - begun), flush=True)
        return pixel is not None


def main():
    if sys.argv[1] == '--is':
        return 0 if is_colour(*sys.argv[2:]) else 1
    kinds = [word for word in sys.argv[4:] if word != '--minimise-all'] or subprocess.run(
        [sys.executable, '-B', PLANT, '--kinds'], capture_output=True, text=True, check=True).stdout.split()
    print('%-16s %-9s %-13s %-5s %-5s %-7s %-9s %s' % (
        'kind', 'call', 'pixel', 'at', 'diff', 'pixels', 'minimise', 'time'))
    with tempfile.TemporaryDirectory() as folder:
        faults = Faults(*sys.argv[1:4], folder)
        faults.minimise_all = '--minimise-all' in sys.argv
        visible = sum(faults.look(kind) for kind in kinds if kind != 'renumber')
    print('%d kinds, %d of them to be seen, %d failures' % (len(kinds), visible, len(failures)))
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
