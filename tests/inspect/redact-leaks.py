#!/usr/bin/env python3
"""Looks in redacted logs for what their documents say and show.

    redact-leaks.py ORVLOG_RECORD ORVLOG DOCUMENT...

The first two pages of each document are logged in every form: plain, in base mode, with all forms of glyphs, coded, in
Zstandard frames, and with images in files beside the log. Of each is redacted: texts, names of fonts and glyphs,
descriptions of profiles, comments and names of files, the outlines and bitmaps of glyphs, and all runs of 16 bytes of an
image must be gone from whatever redact leaves. What is looked for has to be found in the log that was not redacted.
"""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import zlib

RUN = 16
MOST_STRINGS = 300        # of each kind
MOST_RUNS = 1_500_000     # of the original
COMMENT = 'Only for Ms Winterbottom of the fourth floor'
NAME = 'winterbottom'
KINDS = ('texts', 'names of fonts and glyphs', 'profiles', 'comments', 'file names', 'outlines', 'bitmaps', 'images')
failures = []


def run(*words, status=0):
    done = subprocess.run([str(word) for word in words], capture_output=True, timeout=600)
    if done.returncode != status:
        raise SystemExit('%s: status %d: %s' % (' '.join(map(str, words)), done.returncode, done.stderr.decode()))
    return done


class Parts:
    """What a log has of its document, told apart without the program under test."""

    words = set()               # names of elements, attributes and values in all logs

    def __init__(self):
        self.texts = set()      # values of gsp_TextPtr
        self.outlines = set()   # lines with the points of glyphs
        self.paths = set()      # the same of paths
        self.images = []        # bytes
        self.bitmaps = []
        self.profiles = []

    def add(self, text):
        self.levels = []
        self.data = bytearray()
        for line in text.split('\n'):
            line = line.strip()
            if not line.startswith('<'):
                if self.levels and self.levels[-1] == 'BufferUInt8':
                    try:
                        self.data += bytes.fromhex(line)
                    except ValueError:
                        pass
            elif line.startswith('<ProfileBuffer>'):
                digits = re.match('[0-9A-F]*', line[len('<ProfileBuffer>'):])[0]
                self.profiles.append(bytes.fromhex(digits[:len(digits) // 2 * 2]))
            elif line.startswith('</'):
                self.close()
            elif not line.startswith('<!') and line.endswith('>'):
                self.open(line)
        return self

    def open(self, line):
        name = re.match(r'<([^\s/>]*)', line)[1]
        self.words.add(name)
        for attribute, value in re.findall(r' ([A-Za-z_0-9]+)="([^"]*)"', line):
            self.words.add(attribute)
            self.words.update(re.findall('[A-Z_]{5,}', value))
            if attribute == 'gsp_TextPtr':
                self.texts.add(value)
        if name.startswith(('GGO_', 'GPA_')) and len(re.findall(r'\.\d{4,}', line)) >= 2:
            (self.outlines if self.in_glyph() else self.paths).add(line)
        if not line.endswith('/>'):
            self.levels.append(name)
            self.data = bytearray() if name == 'BufferUInt8' else self.data

    def in_glyph(self):
        return any(level.startswith('GFI_GlyphDesc') for level in self.levels)

    def close(self):
        if self.levels and self.levels.pop() == 'BufferUInt8':
            if self.in_glyph():
                self.bitmaps.append(bytes(self.data))
            elif 'GCM_CsdPointer' in self.levels:
                self.profiles.append(bytes(self.data))
            elif not any(level.startswith(('GCM_', 'clp_', 'GFI_')) for level in self.levels):
                self.images.append(bytes(self.data))


def is_constant(data):
    return len(set(data)) < 2


def runs_of(blocks):
    """All runs of bytes; long data that repeats itself is looked at once."""
    pieces = set()
    for block in blocks:
        for at in range(0, len(block), 4096):
            pieces.add(block[at:at + 4096 + RUN - 1])
    return {piece[i:i + RUN] for piece in pieces for i in range(len(piece) - RUN + 1)}


def some_runs(blocks):
    step = max(1, sum(map(len, blocks)) // MOST_RUNS)
    for block in blocks:
        for i in range(0, len(block) - RUN + 1, step):
            if not is_constant(block[i:i + RUN]):
                yield block[i:i + RUN]


def profile_texts(profile):
    texts = set()
    count = int.from_bytes(profile[128:132], 'big') if len(profile) > 132 else 0
    for i in range(min(count, 100)):
        entry = profile[132 + 12 * i:144 + 12 * i]
        at, size = int.from_bytes(entry[4:8], 'big'), int.from_bytes(entry[8:12], 'big')
        data = profile[at:at + size]
        if data[:4] in (b'desc', b'text', b'mluc'):
            texts.update(re.findall(rb'[ -~]{6,}', data[8:]))
            texts.update(re.findall(rb'(?:\0[ -~]){6,}', data[8:]))
    return texts


def document_names(document):
    """Names of fonts, and of glyphs, as far as streams are deflated."""
    data = document.read_bytes()
    parts = [data]
    for found in re.finditer(rb'stream\r?\n', data):
        try:
            parts.append(zlib.decompressobj().decompress(data[found.end():], 1 << 22))
        except zlib.error:
            pass
    names = set()
    for part in parts:
        names.update(re.findall(rb'/(?:BaseFont|FontName|FontFamily)\s*[/(]([\w+,-]{5,})', part))
        for found in re.findall(rb'/Differences\s*\[([^\]]*)\]', part):
            names.update(re.findall(rb'/([A-Za-z]{5,})', found))
    return {name.decode('latin1') for name in names} | {name.decode('latin1').split('+')[-1] for name in names}


class Secrets:
    def __init__(self, document, log_text, beside):
        self.parts = Parts().add(log_text)
        for file in beside:
            data = file.read_bytes()
            if b'<' in data[:200] and b'Buffer' in data:
                self.parts.add(data.decode('latin1'))
            else:
                self.parts.images.append(data)
        said = set()
        for value in self.parts.texts:
            numbers = [int(word) for word in value.split()]
            said.add(''.join(chr(number) for number in numbers if 31 < number < 0x110000))
        self.strings = {
            'texts': said,
            'names of fonts and glyphs': document_names(document),
            'comments': {COMMENT},
            'file names': {NAME} | {file.name for file in beside} | {document.stem}}
        for kind, strings in self.strings.items():
            long = sorted({text for text in strings if self.is_telling(text)}, key=lambda text: (-len(text), text))
            self.strings[kind] = long[:MOST_STRINGS]

    def is_telling(self, text):
        return len(text) >= 5 and len(set(text)) > 2 and not any(text in word for word in self.parts.words)

    def leaks(self, log_text, other):
        """Kinds of what is found in a log, and in other bytes beside it."""
        parts = Parts().add(log_text)
        said = log_text.encode('latin1') + b''.join(other)
        said += b''.join(parts.images + parts.bitmaps + parts.profiles)
        said += b''.join(bytes(int(word) & 255 for word in text.split()) + b'\n' for text in parts.texts)
        found = {kind for kind, strings in self.strings.items()
                 if any(text.encode(code) in said for text in strings for code in ('utf-8', 'utf-16-be', 'utf-16-le'))}
        if {text for text in self.parts.texts & parts.texts if len(set(text.split()) - {'0', '120'}) > 0}:
            found.add('texts')
        if any(text in said for profile in set(self.parts.profiles) for text in profile_texts(profile)):
            found.add('profiles')
        if (self.parts.outlines - self.parts.paths) & (parts.outlines | parts.paths):
            found.add('outlines')
        runs = runs_of(parts.images + parts.bitmaps + parts.profiles + list(other))
        if any(one in runs for one in some_runs(self.parts.images)):
            found.add('images')
        if any(one in runs for one in some_runs(self.parts.bitmaps)):
            found.add('bitmaps')
        return found


def logs_of(record, orvlog, document, folder):
    """Each form of the job: its name, the log, its text, and what lies beside it."""
    def job(name, *options, ending='.xml'):
        (folder / name).mkdir()
        log = folder / name / (NAME + ending)
        run(record, document, '-o', log, '--pages', '1-2', '--stream', 'zstd' if ending.endswith('zst') else 'file',
            *options)
        return log

    def beside(log):
        return [file for file in sorted(log.parent.iterdir()) if file != log and file.suffix in ('.bin', '.tmp')]

    plain = job('plain')
    text = plain.read_bytes().decode('latin1').replace('<ORV_face_start', '\n<!--\n%s\n-->\n<ORV_face_start' % COMMENT)
    plain.write_bytes(text.encode('latin1'))
    (folder / 'coded').mkdir()
    coded = folder / 'coded' / (NAME + '.orvz')
    run(orvlog, 'pack', plain, '-o', coded)
    (folder / 'frames').mkdir()
    frames = folder / 'frames' / (NAME + '.xml.zst')
    run(orvlog, 'repack', plain, '-o', frames)
    for log in (plain, coded, frames):
        yield log.parent.name, log, text, []
    for name, options in (('base', ['--mode', 'base']), ('glyphs', ['--glyphs', 'all']),
                          ('beside', ['--mode', 'base', '--images-beside', NAME, '--keep-images'])):
        log = job(name, *options)
        yield name, log, log.read_bytes().decode('latin1'), beside(log)
    log = job('kept', '--images-beside', NAME, '--keep-images', ending='.xml.zst')
    yield 'kept', log, run(orvlog, 'unpack', log, '-o', '-').stdout.decode('latin1'), beside(log)


def look(record, orvlog, document, folder):
    seen = set()
    for name, log, text, files in logs_of(record, orvlog, document, folder):
        secrets = Secrets(document, text, files)
        # What nothing is found of in the log itself isn't looked for.
        there = secrets.leaks(text, [file.name.encode() for file in files] + [file.read_bytes() for file in files])
        seen |= there
        out = folder / (name + '-out')
        out.mkdir()
        done = run(orvlog, 'redact', log, '-o', out / 'new.xml', '--list', out / 'list.txt')
        left = sorted(file.name for file in out.iterdir())
        told = [done.stdout, done.stderr] + [(out / file).read_bytes() for file in left if file != 'new.xml']
        leaks = secrets.leaks((out / 'new.xml').read_bytes().decode('latin1'), told)
        if leaks or left != ['list.txt', 'new.xml']:
            failures.append('%s, %s: leaves %s, tells %s' % (document.name, name, left, sorted(leaks)))
            print('FAILED: ' + failures[-1])
        shutil.rmtree(out)
        shutil.rmtree(log.parent)
    return seen


def main():
    record, orvlog = sys.argv[1:3]
    for document in map(pathlib.Path, sys.argv[3:]):
        with tempfile.TemporaryDirectory() as folder:
            seen = look(record, orvlog, document, pathlib.Path(folder))
        print('%s: looked for %s' % (document.name, ', '.join(kind for kind in KINDS if kind in seen)), flush=True)
        lacking = {'texts', 'comments', 'file names', 'outlines', 'bitmaps', 'images'} - seen
        if document.stem == 'sample' and lacking:
            failures.append('the sample has no %s' % ', '.join(sorted(lacking)))
            print('FAILED: ' + failures[-1])
    print('%d failures' % len(failures))
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
