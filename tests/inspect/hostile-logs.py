#!/usr/bin/env python3
"""Logs that somebody has made to do harm, through each command that looks for faults: none may crash, hang, take more
memory than the largest call asks for, read what the job hasn't left, or leave files behind.

    hostile-logs.py ORVLOG_RECORD ORVLOG SAMPLE [--large] [KIND...]

--large takes three hundred times as many clips, groups and documents, and longer texts, by hand. Prints what took longest, in processor time.
"""

import os
import pathlib
import resource
import shutil
import subprocess
import sys
import tempfile

SECONDS = 120
MEMORY = 3 << 30
failures = []
times = []

HEAD = '''<ORV Endian="little" LoggingMode="transparent" GlyphLoggingMode="transparent">
  <ORV_document_start document_context="0" document_id="1" font_engine_functions="FALSE">
  </ORV_document_start>
'''
FACE = '''  <ORV_face_start document_context="0" drawing_context="0" font_engine_functions="FALSE" face_seq_number="1" \
pixel_placement_orientation="GPA_PP_ORIENTATION_0_DEG" pixel_placement="GPA_PLACEMENT_PS">
    <ORV_FaceProperties fp_FaceHints="[0] ORV_FACE_HINT_NONE " fp_FaceInchToPixels="1 0 0 1 0 0 " \
fp_WidthInPixels="20" fp_HeightInPixels="20" fp_TrimBox="0 0 1 1 " fp_ClipBox="0 0 1 1 " fp_MediaSize="1 1 ">
    </ORV_FaceProperties>
  </ORV_face_start>
'''
TAIL = '''  <ORV_drawing_finish drawing_context="0">
  </ORV_drawing_finish>
  <ORV_document_finish document_context="0">
  </ORV_document_finish>
</ORV>
'''
OPERATOR = '''<GOP_Operator op_OperatorType="GOP_ROP_PORTER_DUFF" op_Operator="3" op_MaskMode="GOP_MASK_NONE" \
op_TransparencyType="GOP_TRANS_NONE" op_TransparencyFlags="[0] GOP_TRANS_FLAG_NONE " \
op_OperatorHints="[0] GOP_OP_HINT_NONE ">
</GOP_Operator>
'''
SHAPE = '''<GSH_ShapePointer>
<GSH_ShapePointer.sp_HeaderPtr>
<GSH_FilledPathShape fps_WindingRule="GPA_WINDING_NON_ZERO">
<GSH_Shape sh_ShapeType="GSH_SHAPE_FILL" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
</GSH_FilledPathShape>
</GSH_ShapePointer.sp_HeaderPtr>
<GSH_ShapePointer.sp_U.filled_path>
<GPA_PathPointer lpp_EnablePixelPlacement="FALSE" lpp_PathOwned="FALSE">
<GPA_Path pa_NumEdges="1" pa_PathHints="[0] GPA_HINT_NONE " pa_EnclosingBox="0 0 0 0 ">
<GPA_Path.pa_EdgeStart>
<GGO_Point gpf_X="2" gpf_Y="2"/>
</GPA_Path.pa_EdgeStart>
</GPA_Path>
<GPA_PathPointer.lpp_EdgePointer>
<GPA_EdgePointer ep_Owned="FALSE">
<GPA_EdgePointer.ep_Pointer>
<GPA_StraightEdge>
<GPA_Edge ed_EdgeType="GPA_EDGE_STRAIGHT" ed_EdgeFlag="[0] GPA_SUBPATH_END_CLOSED " ed_SegmentCount="3"/>
<GPA_StraightEdge.se_Segment>
<GGO_Vector gvf_X="10" gvf_Y="0"/>
<GGO_Vector gvf_X="0" gvf_Y="10"/>
<GGO_Vector gvf_X="-10" gvf_Y="0"/>
</GPA_StraightEdge.se_Segment>
</GPA_StraightEdge>
</GPA_EdgePointer.ep_Pointer>
</GPA_EdgePointer>
</GPA_PathPointer.lpp_EdgePointer>
</GPA_PathPointer>
</GSH_ShapePointer.sp_U.filled_path>
</GSH_ShapePointer>
'''
COLOUR = '''<GOP_OperandFlatPointer op_UniqueId="0">
<GOP_OperandFlat>
<GOP_Operand go_OpType="GOP_OPERAND_FLAT" go_ColorInfo.GCM_ColorFlag="GCM_CF_OTHER" \
go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_INPUT" go_Hints="[0] GOP_OPD_HINT_NONE " \
go_ColorSpaceFamily="GCM_CSF_RGB"/>
<GOP_OperandFlat.fl_Color>
<GBC_Color bit_depth="32" num_chans="3" has_alpha="FALSE" base_n="1 0 0 " empty_chans="0"/>
</GOP_OperandFlat.fl_Color>
</GOP_OperandFlat>
</GOP_OperandFlatPointer>
'''
CLIP = '''<GSH_ShapeList sl_Hints="[0] GSH_SLH_NONE " sl_ClipIn="TRUE" sl_UniqueId="5">
<GSH_ShapeList.sl_Shape>
%s</GSH_ShapeList.sl_Shape>
</GSH_ShapeList>
''' % SHAPE
IMAGE = '''<GOP_OperandImagePointer Id="10" imp_ImageType="GOP_IMAGE_DIRECT" op_UniqueId="0" \
imp_DirectImageFileName="%s">
</GOP_OperandImagePointer>
'''


def paint(number=0, clip='', operand=COLOUR, drawing='0'):
    name = 'ORV_object_paint'
    return ('  <%s id="%s" drawing_context="%s" object_type_and_flag="4" object_hints="[0] ORV_OBJ_HINT_NONE " '
            'path_pixel_placement="GPA_PLACEMENT_PS">\n<%s.op>\n%s</%s.op>\n<%s.paint_path>\n%s</%s.paint_path>\n'
            '%s<%s.operand1>\n%s</%s.operand1>\n  </%s>\n' % (
                name, number, drawing, name, OPERATOR, name, name, SHAPE, name,
                '<%s.clip>\n%s</%s.clip>\n' % (name, clip, name) if clip else '', name, operand, name, name))


def group(content, start=True, end=True):
    name = 'ORV_group_start'
    opening = ('  <%s drawing_context="0" group_unique_id="1" font_engine_functions="FALSE" '
               'hints="[0] ORV_GRP_HINT_NONE " group_type="ORV_GROUP_SIMPLE" is_knockout="FALSE" '
               'is_replayable="FALSE" pixel_placement_orientation="GPA_PP_ORIENTATION_0_DEG" '
               'has_pixel_placement="FALSE" tiling_flags="[0] ORV_GROUP_TILE_NONE " x_repetition_interval="0" '
               'y_repetition_interval="0">\n<%s.op>\n%s</%s.op>\n  </%s>\n' % (name, name, OPERATOR, name, name))
    finish = '  <ORV_group_finish drawing_context="0" replay_group="FALSE">\n  </ORV_group_finish>\n'
    return (opening if start else '') + content + (finish if end else '')


def resource_of(number, drawing, content):
    return ('  <ORV_resource_start document_context="0" drawing_context="%d" font_engine_functions="FALSE" '
            'resource_id="%d">\n    <ORV_ResourceProperties rp_ResourceHints="[0] ORV_RES_HINT_NONE " '
            'rp_MaxRescale="1" rp_IsKnockout="FALSE" rp_Enclosing_box="0 0 20 20 ">\n'
            '    </ORV_ResourceProperties>\n  </ORV_resource_start>\n%s'
            '  <ORV_drawing_finish drawing_context="%d">\n  </ORV_drawing_finish>\n' % (drawing, number, content,
                                                                                       drawing))


def resource_paint(number, drawing=0):
    return ('  <ORV_resource_paint drawing_context="%d" resource_id="%d" hints="[0] ORV_GRP_HINT_NONE " '
            'group_type="ORV_GROUP_SIMPLE" tiling_flags="0" x_repetition_interval="0" y_repetition_interval="0" '
            'pixel_placement_orientation="GPA_PP_ORIENTATION_0_DEG">\n<ORV_resource_paint.op>\n%s'
            '</ORV_resource_paint.op>\n  </ORV_resource_paint>\n' % (drawing, number, OPERATOR))


def page(calls, head=HEAD):
    return head + FACE + calls + TAIL


def doubling_resources(depth):
    """Each resource paints the one before twice, so that the last one is 2 ^ depth paints."""
    text = resource_of(1, 1, paint(0, drawing='1'))
    for i in range(2, depth):
        text += resource_of(i, i, 2 * resource_paint(i - 1, i))
    return page(resource_paint(depth - 1), HEAD + text)


def processor_time():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


class Hostile:
    def __init__(self, record, orvlog, sample, folder, many):
        self.record = record
        self.orvlog = orvlog
        self.folder = pathlib.Path(folder)
        self.many = many
        self.good = self.folder / 'good.xml'
        self.good.write_text(page(paint(0) + paint(1)))
        self.sample = self.folder / 'sample.xml'
        subprocess.run([record, sample, '-o', self.sample], check=True, capture_output=True, timeout=300)

    def tickets(self):
        text = self.sample.read_bytes()[:600000]
        text = text.replace(b'float="0.950456"', b'float="nan"').replace(b'UInt32="', b'UInt32="99999999999')
        return text.replace(b'<CSD_Data>', b'<CSD_Data><CSD_Data', 1).replace(b'</VariableSizedData>', b'')

    def coded(self, bend):
        packed = self.folder / 'packed.bin'
        subprocess.run([self.orvlog, 'pack', self.sample, '-o', packed], capture_output=True, timeout=300)
        data = bytearray(packed.read_bytes() if packed.exists() else b'')
        packed.unlink(missing_ok=True)
        for at in range(400, len(data), bend):
            data[at] ^= 0x55
        return bytes(data)

    def frames(self, text):
        packed = subprocess.run(['zstd', '-q', '-c'], input=text, capture_output=True, check=True).stdout
        return packed

    def kinds(self):
        many = self.many
        kinds = {
            'empty': lambda: b'',
            'one-byte': lambda: b'<',
            'zeros': lambda: bytes(1 << 20),
            'zeros-behind': lambda: page(paint()).encode()[:-40] + bytes(1 << 20),
            'root-only': lambda: '<ORV>\n',
            'no-root-end': lambda: page(paint())[:-7],
            'resource-in-itself': lambda: page(resource_paint(1), HEAD + resource_of(1, 1, resource_paint(1, 1))),
            'resources-in-a-ring': lambda: page(
                resource_paint(1) + resource_paint(2),
                HEAD + resource_of(1, 1, resource_paint(2, 1)) + resource_of(2, 2, resource_paint(1, 2))),
            'resources-that-double': lambda: doubling_resources(40),
            'ids-of-letters': lambda: page(paint('x') + paint('-1') + paint('') + paint('99999999999999999999')
                                           + paint(2, drawing='zz') + paint(3, drawing='4294967295')),
            'ids-twice': lambda: page(20 * paint(1)),
            'numbers-beyond': lambda: page(paint().replace('gpf_X="2"', 'gpf_X="1e308"').replace(
                'gvf_X="10"', 'gvf_X="nan"').replace('1 0 0 1 0 0 ', 'inf nan 0 1e300 0 0 ')),
            'counts-beyond': lambda: page(paint().replace('ed_SegmentCount="3"', 'ed_SegmentCount="4294967295"')
                                          .replace('pa_NumEdges="1"', 'pa_NumEdges="4294967295"')),
            'page-of-2^31': lambda: page(paint()).replace('InPixels="20"', 'InPixels="2147483647"'),
            'tickets': self.tickets,
            'long-attribute': lambda: page(paint().replace('id="0"', 'id="0" x="%s"' % ('a' * 512 * many))),
            'many-attributes': lambda: page(paint().replace('id="0"', 'id="0"' + ' x="aaa"' * (64 * many))),
            'long-comment': lambda: page('  <!--\n%s\n-->\n' % ('a b -> ' * 32 * many) + paint()),
            'comments': lambda: page('  <!--\na\n-->\n' * (200 * many) + paint()),
            'comment-ends': lambda: page('  <!--\n' + '-->\n' * (100 * many) + 'x\n' + paint()),
            'groups-in-groups': lambda: page(group('', end=False) * (20 * many) + paint()
                                             + group('', start=False) * (20 * many)),
            'groups-open': lambda: page(group(paint(), end=False) * (5 * many)),
            'elements-in-elements': lambda: page('<a>\n' * 20000 + '</a>\n' * 20000),
            'clips': lambda: page(paint(0, CLIP * many) + paint(1)),
            'clips-of-each': lambda: page(''.join(paint(i, CLIP * 100) for i in range(many // 100))),
            'shapes': lambda: page(paint().replace(SHAPE, SHAPE * many)),
            'segments': lambda: page(paint().replace('<GGO_Vector gvf_X="0" gvf_Y="10"/>\n',
                                                     '<GGO_Vector gvf_X="0.001" gvf_Y="1"/>\n' * (10 * many))),
            'documents-open': lambda: HEAD[:HEAD.index('  <ORV_doc')] + ''.join(
                HEAD[HEAD.index('  <ORV_doc'):].replace('context="0"', 'context="%d"' % i)
                for i in range(20 * many)) + page(paint())[len(HEAD):],
            'documents-and-ends': lambda: HEAD[:HEAD.index('  <ORV_doc')] + ''.join(
                HEAD[HEAD.index('  <ORV_doc'):].replace('context="0"', 'context="%d"' % i)
                for i in range(20 * many)) + ''.join(
                '  <ORV_document_finish document_context="%d">\n  </ORV_document_finish>\n' % i
                for i in range(20 * many)) + '</ORV>\n',
            'drawings-open': lambda: page(paint(), HEAD + ''.join(
                FACE.replace('drawing_context="0"', 'drawing_context="%d"' % i) for i in range(1, many // 10))),
            'resources': lambda: page(paint(), HEAD + ''.join(
                resource_of(i, i, '') for i in range(1, 5 * many))),
            'file-above': lambda: page(paint(0, operand=IMAGE % '../secret.bin')),
            'file-of-root': lambda: page(paint(0, operand=IMAGE % '/etc/passwd')),
            'file-of-device': lambda: page(paint(0, operand=IMAGE % '/dev/zero')),
            'file-of-link': lambda: page(paint(0, operand=IMAGE % 'job-dir-10.bin')),
            'file-of-pipe': lambda: page(paint(0, operand=IMAGE % 'job-dir-20.bin')),
            'coded-bent': lambda: self.coded(1000),
            'coded-cut': lambda: self.coded(1 << 30)[:30000],
        }
        if shutil.which('zstd'):
            kinds['frames-of-blanks'] = lambda: self.frames(HEAD.encode() + b' ' * (512 * many) + b'\n</ORV>\n')
            kinds['frames-cut'] = lambda: self.frames(self.sample.read_bytes())[:20000]
        return kinds

    def commands(self, log, out):
        good = str(self.good)
        trial = 'test -s {}'
        return [
            ['at', log, '5,5'], ['at', log, '--box', '0,0,9,9', '--json'], ['state', log, '0'],
            ['state', log, 'line:30', '--json'], ['diff', log, good], ['diff', good, log, '--json', '--tolerance', '1'],
            ['diff', log, good, '--pixels'], ['diff', good, log, '--pixels', '--png', out + '-marked'],
            ['diff', log, log, '--pixels'], ['diff', log, '--against', out + '-none'],
            ['trim', log, '--pages', '1', '-o', out + '-page.xml'], ['trim', log, '--ids', '0', '-o', out + '-id.xml'],
            ['minimise', log, '--while', trial, '--limit', '30', '-o', out + '-least.xml'],
            ['redact', log, '-o', out + '-red.xml'], ['ls', log], ['ls', log, '--json'], ['check', log], ['info', log]]

    def run(self, kind, words):
        limit = lambda: resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
        begun = processor_time()
        what = '%s: %s' % (kind, ' '.join(words))
        try:
            done = subprocess.run([self.orvlog, *words], capture_output=True, timeout=SECONDS, preexec_fn=limit,
                                  env=dict(os.environ, TMPDIR=str(self.folder / 'tmp')))
        except subprocess.TimeoutExpired:
            failures.append('%s: takes more than %d s' % (what, SECONDS))
            print('FAILED: ' + failures[-1], flush=True)
            return
        times.append((processor_time() - begun, what))
        wrong = []
        if done.returncode not in (0, 1):
            wrong.append('status %d' % done.returncode)
        if done.returncode == 1 and not done.stderr and words[0] not in ('diff', 'check'):
            wrong.append('fails without a word')
        if len(done.stderr) > 100000:
            wrong.append('%d bytes on standard error' % len(done.stderr))
        for text in (b'secret', b'root:x'):
            if text in done.stdout or text in done.stderr.replace(b'../secret.bin', b''):
                wrong.append('tells %s' % text)
        if wrong:
            failures.append('%s: %s: %s' % (what, ', '.join(wrong), done.stderr[-300:].decode('latin1')))
            print('FAILED: ' + failures[-1], flush=True)

    def look(self, kind, make):
        jobs = self.folder / 'jobs'
        shutil.rmtree(jobs, ignore_errors=True)
        (jobs / 'here').mkdir(parents=True)
        (self.folder / 'tmp').mkdir(exist_ok=True)
        (jobs / 'secret.bin').write_text('secret')
        (jobs / 'here' / 'job-dir-10.bin').symlink_to(jobs / 'secret.bin')
        os.mkfifo(jobs / 'here' / 'job-dir-20.bin')
        made = make()
        log = jobs / 'here' / 'job.xml'
        log.write_bytes(made.encode('latin1') if isinstance(made, str) else made)
        before = log.read_bytes()
        for words in self.commands(str(log), str(jobs / 'out')):
            self.run(kind, words)
        for file in jobs.glob('out*'):
            data = file.read_bytes() if file.is_file() else b''
            if b'73 65 63 72 65 74' in data or b'secret' in data.replace(b'../secret.bin', b''):
                failures.append('%s: %s has what the job has not left' % (kind, file.name))
                print('FAILED: ' + failures[-1])
        left = sorted(file.name for file in (self.folder / 'tmp').iterdir())
        if left:
            failures.append('%s: leaves %s' % (kind, left))
            print('FAILED: ' + failures[-1])
        if log.read_bytes() != before:
            failures.append('%s: the log has changed' % kind)
            print('FAILED: ' + failures[-1])


def main():
    words = [word for word in sys.argv[1:] if word != '--large']
    record, orvlog, sample = words[:3]
    with tempfile.TemporaryDirectory() as folder:
        hostile = Hostile(record, orvlog, sample, folder, 100000 if '--large' in sys.argv else 300)
        kinds = hostile.kinds()
        for kind in words[3:] or kinds:
            begun = processor_time()
            hostile.look(kind, kinds[kind])
            print('%-24s %6.1f s' % (kind, processor_time() - begun), flush=True)
    for seconds, what in sorted(times, reverse=True)[:10]:
        print('%6.1f s  %s' % (seconds, what))
    print('%d runs, %d failures' % (len(times), len(failures)))
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
