#!/usr/bin/env python3
"""Makes reports of the sample's log, whole, cut, damaged and hostile, and reads back what they tell.

    report-data.py ORVLOG_RECORD ORVLOG SAMPLE
"""

import base64
import hashlib
import html.parser
import json
import os
import re
import subprocess
import sys
import tempfile
import zlib

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.realpath(__file__)))
import report_reader  # noqa: E402

RECORD, ORVLOG, SAMPLE = sys.argv[1:4]
failures = []


def expect(condition, what):
    if not condition:
        failures.append(what)
        print('FAILED: ' + what)
    return condition


def run(*words, **more):
    return subprocess.run([str(word) for word in words], capture_output=True, timeout=300, **more)


def report_of(folder, log, *options, name='report.html', status=0, err=None):
    path = os.path.join(folder, name)
    done = run(ORVLOG, 'report', log, '-o', path, *options)
    expect(done.returncode == status, f'{options}: status {done.returncode}, {done.stderr[:300]}')
    if err is not None:
        expect(done.stderr.decode() == err, f'says {done.stderr}')
    return report_reader.Report(path) if os.path.exists(path) else None


def picture_size(png):
    expect(png[:8] == b'\x89PNG\r\n\x1a\n', 'a picture is PNG')
    return int.from_bytes(png[16:20], 'big'), int.from_bytes(png[20:24], 'big')


def check_calls(report, log):
    """The calls are those that `orvlog ls` lists, and their records those that `orvlog show` shows."""
    calls = report.calls()
    listed = json.loads(run(ORVLOG, 'ls', log, '--json').stdout)
    expect(len(calls) == len(listed) == report.index['logs'][0]['calls']['of'], 'all calls are there')
    kinds = report.index['logs'][0]['kinds']
    for ours, theirs in zip(calls, listed):
        expect((ours['address'], ours['line'], ours['byte'], kinds[ours['kind']], ours['page'] or None) ==
               (theirs['call'], theirs['line'], theirs['byte'], theirs['kind'], theirs['page']),
               f'{ours} is {theirs}')
        expect(ours['text'] == (theirs['text'] or ''), 'texts are the same')
    for call in calls[::17]:
        shown = run(ORVLOG, 'show', log, call['address']).stdout
        record = report.record(call)
        expect(call['whole'] == len(shown), f'{call["address"]}: {call["whole"]} bytes, not {len(shown)}')
        if b'\n[' not in record:
            expect(record == shown, f'the record of {call["address"]} is as the log has it')
        else:
            kept = [line for line in record.split(b'\n') if not line.startswith(b'[')]
            rest = iter(shown.split(b'\n'))
            expect(all(line in rest for line in kept), f'the record of {call["address"]} is part of that in the log')
    return calls


def check_tree(report, calls):
    kinds = report.index['logs'][0]['kinds']
    name = lambda call: kinds[calls[call]['kind']] if call >= 0 else None
    around = {'document_finish': ('document_start',), 'face_start': ('document_start',),
              'drawing_finish': ('face_start', 'resource_start'), 'group_finish': ('group_start',),
              'object_paint': ('face_start', 'group_start', 'resource_start')}
    for place, call in enumerate(calls):
        expect(call['parent'] < place, 'a call stands in one before it')
        wanted = around.get(name(place))
        if wanted:
            expect(name(call['parent']) in wanted, f'{call["address"]} stands in {name(call["parent"])}')
    expect(calls[0]['parent'] == -1, 'the document stands in nothing')


def check_pages(report, calls, folder):
    for page in report.index['logs'][0]['pages']:
        png = report.block(page['picture'])
        expect(picture_size(png) == (page['width'], page['height']), 'a picture has the size of its page')
        steps = report_reader.Steps(report, page)
        effects = report.json(page['effects'])
        painted = {call for call, pixels in zip(effects['call'], effects['pixels']) if pixels > 0}
        changed = {steps.table['call'][i] for i in range(steps.count)
                   if steps.table['pixels'][i] > 0 and steps.table['kind'][i] in (1, 2, 3)}
        expect(changed <= painted, 'what a step changed is told of its call')
        for pixels, why, area in zip(effects['pixels'], effects['why'], effects['area']):
            expect((pixels > 0) == (why == -1) == (area is not None), 'a call has changed something, or there is a reason')
        check_last_look(steps, page, os.path.join(folder, 'pages', 'sample-%03d.png' % page['page']))


def check_last_look(steps, page, file):
    """All steps together make the page, as it was drawn when it was recorded."""
    width = page['width']
    pixels = [0xFFFFFFFF] * (width * page['height'])
    for i in range(steps.count):
        if steps.table['surface'][i] == 0:
            for y, x, colours in steps.runs[i]:
                pixels[y * width + x:y * width + x + len(colours)] = colours
    with open(file, 'rb') as picture:
        expect(rows_of(picture.read()) == pixels, f'the steps make page {page["page"]}')


def rows_of(png):
    data, at, width = b'', 8, int.from_bytes(png[16:20], 'big')
    while at < len(png):
        size = int.from_bytes(png[at:at + 4], 'big')
        if png[at + 4:at + 8] == b'IDAT':
            data += png[at + 8:at + 8 + size]
        at += 12 + size
    data, stride, before, pixels = zlib.decompress(data), 3 * width, bytes(3 * width), []
    for begin in range(0, len(data), stride + 1):
        kind, row = data[begin], bytearray(data[begin + 1:begin + 1 + stride])
        for i in range(stride if kind else 0):
            left = row[i - 3] if i >= 3 else 0
            corner = before[i - 3] if i >= 3 else 0
            near = [abs(before[i] - corner), abs(left - corner), abs(left + before[i] - 2 * corner)]
            paeth = left if near[0] <= near[1] and near[0] <= near[2] else before[i] if near[1] <= near[2] else corner
            row[i] = row[i] + (0, left, before[i], (left + before[i]) // 2, paeth)[kind] & 255
        before = bytes(row)
        pixels += [0xFF000000 | row[i] << 16 | row[i + 1] << 8 | row[i + 2] for i in range(0, stride, 3)]
    return pixels


def check_whole(folder, log):
    report = report_of(folder, log, err='')
    head = report.index['logs'][0]
    with open(log, 'rb') as file:
        text = file.read()
    expect(head['name'] == 'job.xml' and head['bytes'] == len(text), 'name and size are told')
    expect(head['sha256'] == hashlib.sha256(text).hexdigest(), 'the hash is that of the log')
    expect((head['cut'], head['garbled'], head['in_flight'], head['notes']) == (False, False, None, []), 'it is whole')
    expect(head['page_count'] == len(head['pages']) == 3, 'there are three pages')
    calls = check_calls(report, log)
    check_tree(report, calls)
    check_pages(report, calls, folder)
    kinds = {thing['kind'] for thing in report.objects()}
    expect(kinds == {'image', 'glyph', 'ticket', 'gradient'}, f'objects are {kinds}')
    again = report_of(folder, log, name='again.html')
    expect(report.text == again.text, 'the same log makes the same report')
    check_smaller(folder, log, report)


def check_smaller(folder, log, whole):
    page = report_of(folder, log, '--pages', '2', name='page.html', err='')
    expect([one['page'] for one in page.index['logs'][0]['pages']] == [2], 'one page is there')
    expect({call['page'] for call in page.calls()} <= {0, 2}, 'calls of others are not')
    expect(page.index['logs'][0]['page_count'] == 3, 'the log has three')
    plain = report_of(folder, log, '--no-steps', name='plain.html', err='')
    first, other = plain.index['logs'][0]['pages'][0], whole.index['logs'][0]['pages'][0]
    expect(first['steps'] is None and first['effects'] is None, 'there are no steps')
    expect(plain.block(first['picture']) == whole.block(other['picture']), 'the picture is the same')
    expect(len(page.text) < len(whole.text) and len(plain.text) < len(whole.text), 'less is smaller')


class Markup(html.parser.HTMLParser):
    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.tags, self.scripts, self.styles, self.policy, self.title = [], [], [], None, ''
        self.inside = None

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        self.tags.append(tag)
        self.inside = (tag, attributes.get('type'))
        if tag == 'script':
            self.scripts.append([attributes.get('type'), ''])
        if tag == 'style':
            self.styles.append('')
        if attributes.get('http-equiv') == 'Content-Security-Policy':
            self.policy = attributes['content']
        expect(not any(name.startswith('on') or name in ('src', 'style') for name in attributes), f'{tag} {attributes}')
        expect(not attributes.get('href', '#').partition('#')[0], f'{tag} leads elsewhere')

    def handle_endtag(self, tag):
        self.inside = None

    def handle_data(self, data):
        if self.inside and self.inside[0] == 'script':
            self.scripts[-1][1] += data
        elif self.inside and self.inside[0] == 'style':
            self.styles[-1] += data
        elif self.inside and self.inside[0] == 'title':
            self.title += data


def markup_of(report):
    markup = Markup()
    markup.feed(report.text.decode('utf-8'))
    return markup


def check_policy(markup):
    run_scripts = [text for kind, text in markup.scripts if kind is None]
    expect(len(run_scripts) == 1 and len(markup.styles) == 1, 'one script runs, and there is one style')
    name = lambda text: "'sha256-" + base64.b64encode(hashlib.sha256(text.encode()).digest()).decode() + "'"
    expect(markup.policy == f"default-src 'none'; img-src data: blob:; script-src {name(run_scripts[0])}; "
           f"style-src {name(markup.styles[0])}; base-uri 'none'; form-action 'none'", f'the policy is {markup.policy}')
    expect({kind for kind, _ in markup.scripts} == {None, 'application/json', 'application/octet-stream;base64'},
           'the other scripts are data')


def check_hostile(folder, log):
    """Whatever a log says is text."""
    plain = markup_of(report_of(folder, log))
    check_policy(plain)
    evil = '</script><script>alert(1)</script><!--<img src=x onerror=alert(1)>"\'&\u202e\u2028\x01'
    with open(log, 'rb') as file:
        text = file.read()
    name = ''.join('\\x%02x' % ord(c) if c in '"<>' else c for c in evil + 'x' * (1 << 20)).encode()
    text = re.sub(rb'fp_EngineIdGet="[^"]*"', b'fp_EngineIdGet="' + name.replace(b'\\', b'\\\\') + b'"', text, count=1)
    text = text.replace(b'<ORV_face_start ', b'<!--' + evil.replace('-->', '').encode() + b'\0 -->\n  <ORV_face_start ', 1)
    text = text.replace(b'ImageFileName="', b'ImageFileName="' + name)
    bad = os.path.join(folder, '"a<b>&\'\u202e.xml')
    with open(bad, 'wb') as file:
        file.write(text)
    path = os.path.join(folder, 'bad.html')
    done = run(ORVLOG, 'report', bad, '-o', path)
    expect(done.returncode in (0, 1), f'status {done.returncode}')
    report = report_reader.Report(path)
    markup = markup_of(report)
    check_policy(markup)
    known = lambda tags: [tag for tag in tags if tag != 'script']
    expect(known(markup.tags) == known(plain.tags), 'no tag comes from a log')
    expect(markup.title.startswith('"a<b>&\'\u202e.xml'), f'the title is {markup.title}')
    expect(report.index['logs'][0]['name'] == '"a<b>&\'\u202e.xml', 'the name is as it is')
    engines = next(figure for figure in report.index['logs'][0]['figures'] if figure['title'] == 'engines')
    expect(any(name.startswith('</script><script>alert(1)') for name, _ in engines['rows']), f'{engines}'[:300])
    check_index(report)


def check_index(report):
    index = report_reader.INDEX.search(report.text).group(1)
    expect(not re.search(rb'[<>&\x00-\x09\x0b-\x1f\x7f-\xff]', index), 'the index is harmless ASCII')


def check_cut(folder, log):
    with open(log, 'rb') as file:
        text = file.read()
    at = text.index(b'<ORV_object_paint id="120"')
    cut = os.path.join(folder, 'cut.xml')
    with open(cut, 'wb') as file:
        file.write(text[:text.index(b'\n', at) + 40])
    report = report_of(folder, cut, name='cut.html', status=1, err=f'orvlog: {cut}: is cut short; what it has is shown\n')
    head = report.index['logs'][0]
    calls = report.calls()
    expect(head['cut'] and head['notes'][0] == 'is cut short; what it has is shown', 'it is told as cut')
    expect(head['in_flight'] and calls[head['in_flight']['call']]['address'] == '120', f'{head["in_flight"]}')
    expect(calls[-1]['address'] == '120', 'the last call is that one')
    damaged = os.path.join(folder, 'damaged.xml')
    with open(damaged, 'wb') as file:
        file.write(text.replace(b'  <ORV_group_finish', b'\x80\x81 garbage\n  <ORV_group_finish', 1))
    report = report_of(folder, damaged, name='damaged.html', status=1)
    expect(report.index['logs'][0]['damage']['count'] == 1, 'damage is counted')
    expect(report.index['logs'][0]['notes'] and report.index['logs'][0]['damage']['first'][0]['line'] > 1, 'and told')


def check_refusals(folder, log):
    missing = os.path.join(folder, 'none.xml')
    for words, status, says in (
            ([missing], 1, f'orvlog: {missing}: No such file or directory\n'),
            ([log, '--pages', '4'], 1, f'orvlog: {log}: has no page 4, but 3 in all\n'),
            ([SAMPLE], 1, f'orvlog: {SAMPLE}: not a log\n'),
            (['-', '-'], 2, 'orvlog: the standard input can be one of the logs, not both\n')):
        path = os.path.join(folder, 'refused.html')
        done = run(ORVLOG, 'report', *words, '-o', path, stdin=subprocess.DEVNULL)
        expect((done.returncode, done.stderr.decode()) == (status, says), f'{words}: {done.returncode} {done.stderr}')
        expect(not os.path.exists(path), 'nothing is left')
    done = run(ORVLOG, 'report', log, '-o', log)
    expect(done.returncode == 1 and b'is the log itself' in done.stderr, 'the log is not overwritten')
    done = run(ORVLOG, 'report', log, '-o', os.path.join(folder, 'none', 'x.html'))
    expect(done.returncode == 1, 'a folder that is not there')
    done = run(ORVLOG, 'report', log)
    expect(done.returncode == 2, 'no name for the report')
    with open(log, 'rb') as file:
        done = run(ORVLOG, 'report', '-', '-o', '-', stdin=file)
    expect(done.returncode == 0 and done.stdout.startswith(b'<!DOCTYPE html>'), 'from input to output')
    if os.path.exists('/dev/full'):
        done = run(ORVLOG, 'report', log, '-o', '/dev/full')
        expect(done.returncode == 1 and b'No space left' in done.stderr, f'a full disk: {done.stderr}')


def check_two(folder, log):
    with open(log, 'rb') as file:
        text = file.read()
    at = text.index(b' id="3" drawing_context')
    begin = text.index(b'base_n="', at)
    other = os.path.join(folder, 'other.xml')
    with open(other, 'wb') as file:
        file.write(text[:begin] + b'base_n="0.25 ' + text[text.index(b' ', begin) + 1:])
    report = report_of(folder, log, other, name='two.html', err='')
    expect([one['name'] for one in report.index['logs']] == ['job.xml', 'other.xml'], 'both logs are there')
    compare = report.index['compare']
    rows = [report.json(block['list']) for block in compare['blocks']]
    kinds = [kind for block in rows for kind in block['kind']]
    a, b = report.calls(0), report.calls(1)
    expect(len(kinds) == len(a) == len(b), 'each call has a row')
    differing = [(block['a'][i], block['b'][i], block['differences'][i]) for block in rows
                 for i in range(len(block['kind'])) if block['kind'][i] != 0]
    listed = json.loads(run(ORVLOG, 'diff', log, other, '--json').stdout)
    expect(len(differing) == 1 and a[differing[0][0]]['address'] == b[differing[0][1]]['address'] == '3',
           f'the call that differs is 3: {differing}')
    expect(differing[0][2][0][1] == 'base_n' and differing[0][2][0][3].startswith('0.25 '), 'its colour differs')
    expect(compare['counts']['changed'] == 1 and compare['counts']['same'] == len(a) - 1, f'{compare["counts"]}')
    expect(bool(listed), 'diff finds it, too')
    pages = compare['pages']
    expect([(page['a'], page['b'], page['same']) for page in pages] == [(1, 1, False), (2, 2, True), (3, 3, True)],
           f'the first page differs: {pages}')
    expect(pages[0]['pixels'] > 0 and pages[0]['call_a'] == '3', 'from that call on')
    expect(picture_size(report.block(pages[0]['picture'])) == (794, 1123), 'the difference is shown')


def check_record(folder):
    page = os.path.join(folder, 'recorded.html')
    log = os.path.join(folder, 'recorded.xml')
    done = run(ORVLOG, 'record', SAMPLE, '-o', log, '--png', folder, '--pages', '1', '--report', page,
               env={**os.environ, 'ORVLOG_EXEC_PATH': os.path.dirname(RECORD)})
    expect(done.returncode == 0 and done.stdout.endswith(f'report in {page}\n'.encode()), f'{done}')
    expect(report_reader.Report(page).index['logs'][0]['page_count'] == 1, 'a report of what was recorded')
    # A log for the standard output leaves its image data in the present folder.
    beside = os.path.join(folder, 'beside')
    os.mkdir(beside)
    done = run(os.path.abspath(ORVLOG), 'record', os.path.abspath(SAMPLE), '-o', '-', '--png', beside, '--images-beside',
               'data', '--report', 'page.html', cwd=beside,
               env={**os.environ, 'ORVLOG_EXEC_PATH': os.path.abspath(os.path.dirname(RECORD))})
    expect(done.returncode == 0 and b'lacks' not in done.stderr, f'images beside are found: {done.stderr}')


def main():
    with tempfile.TemporaryDirectory() as folder:
        log = os.path.join(folder, 'job.xml')
        done = run(RECORD, SAMPLE, '-o', log, '--png', os.path.join(folder, 'pages'))
        expect(done.returncode == 0, 'the sample is recorded')
        check_whole(folder, log)
        check_hostile(folder, log)
        check_cut(folder, log)
        check_refusals(folder, log)
        check_two(folder, log)
        check_record(folder)
    print(f'{len(failures)} failures')
    return 1 if failures else 0


sys.exit(main())
