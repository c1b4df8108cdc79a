"""Reads the data of a report, as inspect/report/data-format.md tells it, and finds what changed a pixel."""

import base64
import json
import math
import re
import struct
import zlib

ELEMENT = re.compile(rb'<script type="application/octet-stream;base64" id="(b\d+)" data-coding="(\w+)">([^<]*)</script>')
INDEX = re.compile(rb'<script type="application/json" id="index">(.*?)</script>', re.S)
PAGE, LAYER, CELL = range(3)
BEGINS, PAINTED, GROUP, CELLS, PART = range(5)


class Report:
    def __init__(self, path):
        with open(path, 'rb') as file:
            self.text = file.read()
        self.places = {name.decode(): (coding, match.span(3)) for match in ELEMENT.finditer(self.text)
                       for name, coding in [match.group(1, 2)]}
        self.index = json.loads(INDEX.search(self.text).group(1))

    def block(self, name):
        coding, (begin, end) = self.places[name]
        data = base64.b64decode(self.text[begin:end], validate=True)
        return zlib.decompress(data) if coding == b'deflate' else data

    def json(self, name):
        return json.loads(self.block(name))

    def calls(self, log=0):
        """A dictionary for each call that is listed."""
        rows = []
        for block in self.index['logs'][log]['calls']['blocks']:
            columns = self.json(block['list'])
            strings = columns.pop('strings', [])
            for i in range(block['count']):
                row = {name: values[i] for name, values in columns.items()}
                for name in ('op', 'paint', 'text'):
                    row[name] = strings[row[name]] if row[name] >= 0 else ''
                row['warnings'] = [strings[place] for place in row['warnings'] or []]
                rows.append(row)
        return rows

    def record(self, call, log=0):
        if call['block'] < 0:
            return None
        data = self.block(self.index['logs'][log]['texts'][call['block']])
        return data[call['at']:call['at'] + call['size']]

    def objects(self, log=0):
        rows = []
        for block in self.index['logs'][log]['objects']['blocks']:
            columns = self.json(block['list'])
            rows += [{name: values[i] for name, values in columns.items()} for i in range(block['count'])]
        return rows


def numbers(data):
    value = shift = 0
    for byte in data:
        value |= (byte & 127) << shift
        shift += 7
        if byte < 128:
            yield value
            value = shift = 0


def colour_text(colour, alpha):
    if colour is None:
        return None
    opacity = colour >> 24
    channels = [0 if opacity == 0 else min(((colour >> shift & 255) * 255 + opacity // 2) // opacity, 255)
                for shift in (16, 8, 0)]
    return '#' + ''.join('%02x' % value for value in channels + ([opacity] if alpha else []))


class Steps:
    """The steps of a page, each with its runs and colours."""

    def __init__(self, report, page):
        steps = page['steps']
        self.count = steps['count']
        self.table = report.json(steps['table'])
        self.surfaces = report.json(steps['surfaces'])
        self.frames = report.json(steps['frames'])
        self.runs = []
        self.keys = []
        for chunk in steps['chunks']:
            self.read_chunk(report, chunk)
        assert len(self.runs) == self.count, 'steps are missing'

    def read_chunk(self, report, chunk):
        if chunk['key'] is not None:
            self.keys.append((chunk['first'], report.block(chunk['key'])))
        values = numbers(report.block(chunk['runs']))
        data = report.block(chunk['pixels'])
        colours = struct.unpack('<%dI' % (len(data) // 4), data)
        at = 0
        for step in range(chunk['first'], chunk['first'] + chunk['count']):
            runs = []
            if self.table['pixels'][step] > 0:
                x0, y, _, _ = self.table['area'][step]
                x = x0
                for _ in range(next(values)):
                    down, right, length = next(values), next(values), next(values)
                    x = (x0 if down > 0 else x) + right
                    y += down
                    runs.append((y, x, colours[at:at + length]))
                    at += length
                    x += length
            self.runs.append(runs)
        assert at == len(colours) and next(values, None) is None, 'a chunk has more than its steps'

    def boxes(self, surface, x, y):
        """The place on a surface that a pixel of the page is made at, and what counts: columns and rows."""
        if surface < 0 or self.surfaces['kind'][surface] == PAGE:
            return (x, y), {x}, {y}
        place, columns, rows = self.boxes(self.surfaces['below'][surface], x, y)
        if self.surfaces['kind'][surface] == LAYER:
            return place, columns, rows
        xx, yx, xy, yy, x0, y0 = self.surfaces['to_cell'][surface]
        wide, high = self.surfaces['width'][surface], self.surfaces['height'][surface]
        reach = self.surfaces['reach'][surface]
        u = (place[0] + 0.5) * xx + (place[1] + 0.5) * xy + x0
        v = (place[0] + 0.5) * yx + (place[1] + 0.5) * yy + y0
        near = lambda at, size: {i % size for i in range(math.floor(at - reach), min(math.ceil(at + reach),
                                                                                   math.floor(at - reach) + size))}
        return (math.floor(u) % wide, math.floor(v) % high), near(u, wide), near(v, high)

    def outside(self, frame):
        while frame >= 0:
            yield self.frames['call'][frame]
            frame = self.frames['outside'][frame]

    def at(self, x, y):
        """What changed a pixel, in order."""
        entries = []
        state = {}
        known = {}
        for step in range(self.count):
            surface = self.table['surface'][step]
            kind = self.table['kind'][step]
            if surface not in known:
                known[surface] = self.boxes(surface, x, y)
            (px, py), columns, rows = known[surface]
            if kind == BEGINS:
                state[surface] = 0xFFFFFFFF if self.surfaces['kind'][surface] == PAGE else 0
                left, top = self.surfaces['x'][surface], self.surfaces['y'][surface]
                if not (left <= px < left + self.surfaces['width'][surface] and
                        top <= py < top + self.surfaces['height'][surface]):
                    state[surface] = None
            before, touched = state[surface], False
            for y0, x0, colours in self.runs[step]:
                if y0 in rows and any(x0 <= column < x0 + len(colours) for column in columns):
                    touched = True
                if y0 == py and x0 <= px < x0 + len(colours):
                    state[surface] = colours[px - x0]
            if touched and kind in (PAINTED, GROUP, CELLS):
                self.add(entries, step, before, state[surface])
        return entries

    def add(self, entries, step, before, after):
        frame = self.table['frame'][step]
        on_layer = self.surfaces['kind'][self.table['surface'][step]] != PAGE
        call, kind = self.table['call'][step], self.table['kind'][step]
        last = entries[-1] if entries else None
        if kind == PAINTED and last and last['kind'] == PAINTED and (last['call'], last['frame']) == (call, frame):
            last['after'] = colour_text(after, on_layer)
            return
        entries.append({'kind': kind, 'call': call, 'by': self.table['by'][step], 'frame': frame,
                        'in': list(self.outside(frame)), 'before': colour_text(before, on_layer),
                        'after': colour_text(after, on_layer)})
