#!/usr/bin/env python3
"""Makes a log with one planted fault: one attribute of one call changed, a call missing, twice, or out of order.

    planted-faults.py LOG KIND OUT [--pick N] [--id ID]
    planted-faults.py --kinds

LOG is a plain log. Without --pick the call in the middle of those that KIND can be done to is taken; with --pick
the Nth of them, from 0; with --id those of the paint of that id. What was done is told in one line of four fields
with tabs between them: the call's address in LOG, its address in OUT, the elements below the call down to the one
that was changed, and the attribute; "-" stands for what there is not. The kind `renumber` makes no fault: the same
job with other numbers.
"""

import argparse
import re
import sys

TAG = re.compile(rb'^\s*<(/?)([A-Za-z_][\w.]*)(.*?)(/?)>\s*$', re.S)
NUMBER = rb'-?[0-9.]+(?:e[-+]?[0-9]+)?'
PAINTS = (b'ORV_object_paint', b'ORV_object_paint_and_stroke')


class Call:
    """The lines from a call's opening tag to its closing one."""

    def __init__(self, begin, name):
        self.begin = begin
        self.end = begin
        self.name = name
        self.paths = []  # (line, elements below the call)


def split_calls(lines):
    calls = []
    open_names = []
    ticket = False
    for number, line in enumerate(lines):
        if ticket:
            ticket = line.strip() != b'</GCM_ColorTicket>' or line.startswith(b'      ')
            if ticket:
                calls[-1].paths.append((number, list(open_names[2:]) + [b'text']))
                continue
        tag = TAG.match(line)
        if not tag:
            if len(open_names) > 2:
                calls[-1].paths.append((number, list(open_names[2:])))
            continue
        closing, name, _, alone = tag.groups()
        if closing:
            if len(open_names) == 2:
                calls[-1].end = number
            open_names.pop()
            continue
        open_names.append(name)
        if len(open_names) == 2:
            calls.append(Call(number, name))
        if len(open_names) >= 2:
            calls[-1].paths.append((number, list(open_names[2:])))
        if name == b'GCM_ColorTicket' and len(open_names) == 3:
            ticket = lines[number + 1].strip() == b'<GXC_ColorTickets>'
        if alone:
            open_names.pop()
    return calls


def attribute(line, name):
    found = re.search(rb' ' + re.escape(name) + rb'="([^"]*)"', line)
    return found.group(1) if found else None


def with_attribute(line, name, value):
    return re.sub(rb'( ' + re.escape(name) + rb'=")[^"]*"', lambda m: m.group(1) + value + b'"', line, count=1)


def moved(value, index=0, by=0.25):
    numbers = value.split()
    numbers[index] = repr(float(numbers[index]) + by).encode()
    return b' '.join(numbers) + (b' ' if value.endswith(b' ') else b'')


def inverted(value):
    numbers = value.split()
    first = float(numbers[0])
    numbers[0] = b'0' if first > 0.5 else b'1'
    return b' '.join(numbers) + b' '


def swap(one, other):
    return lambda value: other if value == one else one if value == other else None


def only_from(one, other):
    return lambda value: other if value == one else None


def scaled(factor):
    return lambda value: b'%.9g' % (float(value) * factor)


def fixed(new):
    return lambda value: None if value == new else new


def under(*names):
    """Lines whose elements, down from the call, have each of these in the order given; a name ends what it must."""

    def holds(path):
        at = 0
        for element in path:
            if at < len(names) and element.endswith(names[at]):
                at += 1
        return at == len(names) and path and path[-1].endswith(names[-1])

    return holds


class Change:
    """One attribute of one element; `calls` the kinds of calls it is looked for in, all by default."""

    def __init__(self, where, name, new, calls=None, first=True):
        self.where = where
        self.name = name
        self.new = new
        self.calls = calls
        self.first = first


RULES = swap(b'GPA_WINDING_NON_ZERO', b'GPA_WINDING_ODD_EVEN')
CHANGES = {
    'operator': Change(under(b'op', b'GOP_Operator'), b'op_Operator', lambda v: b'12' if v != b'12' else b'3', PAINTS),
    'operator-type': Change(under(b'op', b'GOP_Operator'), b'op_OperatorType', fixed(b'GOP_ROP_PDF_SEPARABLE'), PAINTS),
    'mask-mode': Change(under(b'op', b'GOP_Operator'), b'op_MaskMode', swap(b'GOP_MASK_IN', b'GOP_MASK_OUT')),
    'colour': Change(under(b'operand1', b'GBC_Color'), b'base_n', inverted, PAINTS),
    'alpha': Change(under(b'GBC_Color'), b'alpha', lambda v: b'0.05' if v != b'0.05' else b'0.5'),
    'blend': Change(under(b'op', b'GOP_Operator'), b'op_Operator', swap(b'1', b'2'), PAINTS),
    'mask-lost': Change(under(b'op', b'GOP_Operator'), b'op_MaskMode', only_from(b'GOP_MASK_IN', b'GOP_MASK_NONE'), PAINTS),
    'mask-colour': Change(under(b'operand2', b'GBC_Color'), b'base_n', inverted),
    'clip-point': Change(under(b'clip', b'GGO_Point'), b'gpf_X', moved),
    'clip-segment': Change(under(b'clip', b'GGO_Vector'), b'gvf_Y', moved),
    'clip-rule': Change(under(b'clip', b'GSH_FilledPathShape'), b'fps_WindingRule', RULES),
    'clip-side': Change(under(b'clip', b'GSH_ShapeList'), b'sl_ClipIn', swap(b'TRUE', b'FALSE')),
    'shape-matrix': Change(under(b'paint_path', b'GSH_Shape'), b'sh_Transform', lambda v: moved(v, 4), PAINTS),
    'winding': Change(under(b'paint_path', b'GSH_FilledPathShape'), b'fps_WindingRule', RULES, PAINTS),
    'point': Change(under(b'paint_path', b'GGO_Point'), b'gpf_Y', moved, PAINTS),
    'segment': Change(under(b'paint_path', b'GGO_Vector'), b'gvf_X', moved, PAINTS),
    'curve': Change(under(b'paint_path', b'GPA_BezierSegment'), b'bs_EndPoint', moved, PAINTS),
    'edge-flag': Change(under(b'paint_path', b'GPA_Edge'), b'ed_EdgeFlag',
                        swap(b'[0] GPA_SUBPATH_END_CLOSED ', b'[0x2] GPA_SUBPATH_END_OPEN '), PAINTS),
    'stroke-width': Change(under(b'GPA_PathStrokingParams'), b'psp_StrokeWidth', scaled(3), PAINTS, first=False),
    'cap': Change(under(b'GPA_PathStrokingParams'), b'psp_Flags.S', swap(b'GPA_CAP_BUTT', b'GPA_CAP_ROUND'), PAINTS),
    'join': Change(under(b'GPA_PathStrokingParams'), b'psp_Flags.J', swap(b'GPA_JOIN_MITER', b'GPA_JOIN_ROUND'),
                   PAINTS),
    'paint-flags': Change(lambda path: not path, b'paint_flags',
                          swap(b'[0x1] ORV_PAINTFLAGS_FILL ', b'[0x2] ORV_PAINTFLAGS_STROKE '), PAINTS),
    'object-type': Change(lambda path: not path, b'object_type_and_flag', lambda v: b'%d' % (int(v) ^ 8), PAINTS),
    'image-matrix': Change(under(b'operand1', b'GOP_OperandImage'), b'im_Transform', lambda v: moved(v, 4), PAINTS),
    'gradient-point': Change(under(b'GOP_OperandGradMultistop'), b'gm_Pt1', lambda v: moved(v, 0, 40)),
    'gradient-stop': Change(under(b'GOP_GradStop', b'GBC_Color'), b'base_n', inverted),
    'glyph-point': Change(under(b'GFI_GlyphGetFn', b'GGO_Point'), b'gpf_X', moved),
    'glyph-advance': Change(under(b'GFI_GlyphIndexGetFn'), b'advance_vector', moved),
    'text': Change(under(b'GFI_StringDescPointer'), b'gsp_TextPtr',
                   lambda v: b'%d ' % ((int(v.split()[0]) + 1) % 256) + b''.join(c + b' ' for c in v.split()[1:])),
    'font-size': Change(under(b'GFI_FontSpec'), b'ufs_FontSize', scaled(2)),
    'knockout': Change(lambda path: not path, b'is_knockout', swap(b'TRUE', b'FALSE'), (b'ORV_group_start',)),
    'group-type': Change(lambda path: not path, b'group_type',
                         swap(b'ORV_GROUP_SIMPLE', b'ORV_GROUP_NON_ISOLATED'), (b'ORV_group_start',)),
    'resource-matrix': Change(lambda path: not path, b'retransform', lambda v: moved(v, 0, 0.5),
                              (b'ORV_resource_paint',)),
    'resource-step': Change(lambda path: not path, b'x_repetition_interval', scaled(2), (b'ORV_resource_paint',)),
    'page-size': Change(under(b'ORV_FaceProperties'), b'fp_WidthInPixels', lambda v: b'%d' % (int(v) - 10)),
}


def addresses(lines, call):
    number = attribute(lines[call.begin], b'id')
    return number.decode() if number is not None else 'line:%d' % (call.begin + 1)


def path_text(path):
    return b'/'.join(path).decode('latin1') if path else '.'


def attribute_places(lines, calls, change):
    """(call, line, path, new value) for the first or last such element of each call."""
    for call in calls:
        if change.calls and call.name not in change.calls:
            continue
        found = None
        for number, path in call.paths:
            if b'text' in path or (found and change.first) or not change.where(path):
                continue
            value = attribute(lines[number], change.name)
            new = change.new(value) if value is not None and value.strip() else None
            if new is not None and new != value:
                found = (call, number, path, new)
        if found:
            yield found


def row_places(lines, calls, ending):
    for call in calls:
        for number, path in call.paths:
            row = lines[number].strip()
            if path[-len(ending):] == ending and row and not row.startswith(b'<'):
                yield call, number, path
                break


def ticket_places(lines, calls):
    for call in calls:
        for number, path in call.paths:
            if b'text' in path and b'WhitePoint_X float=' in lines[number]:
                yield call, number, path
                break


def renumber_paints(lines):
    """The ids of paints once more from 0, as a log has them."""
    number = 0
    paint = re.compile(rb'^  <ORV_object_paint(?:_and_stroke)? id="')
    for at, line in enumerate(lines):
        if paint.match(line):
            lines[at] = with_attribute(line, b'id', b'%d' % number)
            number += 1


def renumber_all(lines):
    steps = {b'document_context': 5, b'drawing_context': 7, b'parent_drawing': 7, b'resource_id': 11, b'GfpId': 3,
             b'orvlog_font_spec_id': 20, b'orvlog_string_desc_id': 30, b'Id': 70, b'op_UniqueId': 1000,
             b'sl_UniqueId': 2000, b'group_unique_id': 3000, b'unique_font_id': 9}
    for at, line in enumerate(lines):
        tag = TAG.match(line)
        if not tag or tag.group(1):
            continue
        numbers = dict(steps)
        if tag.group(2) in PAINTS:
            numbers[b'id'] = 100
        if tag.group(2) == b'GCM_ColorTicket':
            numbers[b'id'] = 4
        for name, step in numbers.items():
            value = attribute(line, name)
            if value is not None and value.isdigit() and not (value == b'0' and name.startswith((b'op_', b'sl_'))):
                line = with_attribute(line, name, b'%d' % (int(value) + step))
        lines[at] = line


def only(places, options):
    places = list(places)
    if options.id is not None:
        places = [place for place in places if place[0].number == options.id]
    if not places:
        sys.exit('planted-faults: %s: nothing to do %s to' % (options.log, options.kind))
    return places[options.pick if options.pick is not None else len(places) // 2]


def neighbours(lines, calls):
    for one, other in zip(calls, calls[1:]):
        same = lines[one.begin + 1:one.end] == lines[other.begin + 1:other.end]
        if one.name in PAINTS and other.name in PAINTS and not same:
            yield one, other


def plant(lines, options):
    calls = split_calls(lines)
    for call in calls:
        number = attribute(lines[call.begin], b'id')
        call.number = int(number) if number is not None else None
    kind = options.kind
    paints = [(call,) for call in calls if call.name in PAINTS]
    if kind == 'renumber':
        renumber_all(lines)
        return '-', '-', '-', '-'
    if kind == 'drop':
        call, = only(paints, options)
        told = addresses(lines, call)
        del lines[call.begin:call.end + 1]
        renumber_paints(lines)
        return told, '-', '-', '-'
    if kind == 'twice':
        call, = only(paints, options)
        told = addresses(lines, call)
        lines[call.end + 1:call.end + 1] = lines[call.begin:call.end + 1]
        renumber_paints(lines)
        return told, str(call.number + 1), '-', '-'
    if kind == 'swap':
        one, other = only(neighbours(lines, calls), options)
        told = addresses(lines, one)
        first, second = lines[one.begin:one.end + 1], lines[other.begin:other.end + 1]
        lines[one.begin:other.end + 1] = second + lines[one.end + 1:other.begin] + first
        renumber_paints(lines)
        return told, str(one.number + 1), '-', '-'
    if kind in ('image-row', 'dash'):
        ending = [b'img_buf', b'BufferUInt8'] if kind == 'image-row' else [b'psp_DashLength', b'BufferFloat']
        call, number, path = only(row_places(lines, calls, ending), options)
        values = lines[number].split(b' ')
        values[0] = b'%02x' % (int(values[0], 16) ^ 0x80) if kind == 'image-row' else b'0.5'
        lines[number] = b' '.join(values)
        return addresses(lines, call), addresses(lines, call), path_text(path), '-'
    if kind == 'ticket':
        call, number, path = only(ticket_places(lines, calls), options)
        lines[number] = re.sub(rb'float="[^"]*"', b'float="0.500000"', lines[number])
        return addresses(lines, call), addresses(lines, call), 'GCM_ColorTicket', '-'
    change = CHANGES[kind]
    call, number, path, new = only(attribute_places(lines, calls, change), options)
    lines[number] = with_attribute(lines[number], change.name, new)
    return addresses(lines, call), addresses(lines, call), path_text(path), change.name.decode()


KINDS = sorted(CHANGES) + ['dash', 'drop', 'image-row', 'renumber', 'swap', 'ticket', 'twice']


def main():
    if sys.argv[1:] == ['--kinds']:
        print('\n'.join(KINDS))
        return
    parser = argparse.ArgumentParser()
    parser.add_argument('log')
    parser.add_argument('kind', choices=KINDS)
    parser.add_argument('out')
    parser.add_argument('--pick', type=int)
    parser.add_argument('--id', type=int)
    options = parser.parse_args()
    with open(options.log, 'rb') as file:
        lines = file.read().split(b'\n')
    told = plant(lines, options)
    with open(options.out, 'wb') as file:
        file.write(b'\n'.join(lines))
    print('\t'.join(told))


if __name__ == '__main__':
    main()
