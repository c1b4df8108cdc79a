// The jobs of reports that are made by hand.

import {assemble, Blocks, Drawing, indexOf, logOf} from './made-report.mjs';

const KINDS = ['document_start', 'face_start', 'group_start', 'object_paint', 'group_finish', 'drawing_finish',
    'resource_paint', 'resource_start'];

const square = (x0, y0, x1, y1) => `M${x0} ${y0}H${x1}V${y1}H${x0}Z`;
const paint = (id, box, colour, more) => ({kind: 'object_paint', address: String(id), page: 1, parent: 1,
    op: 'source-over', paint: 'rgb(1 0 0)', colour, box, shapes: [{d: square(...box)}], ...more});

/**
 * A page with a red square (call 2), a group with a green one in it (4) that is put on the page (5), a paint without
 * effect (6), a cell with a blue column (8) that repeats every ten columns (7), and one with two clips (10).
 */
export function smallJob(blocks, change = {}) {
    const drawing = new Drawing(blocks, 100, 80);
    drawing.fill(2, [10, 10, 40, 40], change.colour ?? 0xffff0000);
    drawing.frame(3);
    drawing.begin(1, 3, 20, 20, 40, 40);
    drawing.fill(4, [30, 30, 50, 50], 0xff00ff00);
    drawing.leave();
    drawing.put(5, 3);
    drawing.fill(6, [0, 0, 0, 0], 0);
    drawing.frame(7);
    drawing.begin(2, 7, 0, 0, 10, 10, [1, 0, 0, 1, -60, -60]);
    drawing.fill(8, [2, 0, 3, 10], 0xff0000ff);
    drawing.leave();
    drawing.put(7, 7, 3, (x, y) => [[60 + x, 60 + y], [70 + x, 60 + y], [80 + x, 60 + y]]);
    drawing.fill(10, [12, 12, 14, 14], 0xff808080);
    const calls = [
        {kind: 'document_start', address: 'line:2'},
        {kind: 'face_start', address: 'line:4', page: 1, parent: 0},
        paint(0, [10, 10, 40, 40], change.colour === undefined ? 0xff0000 : 0x00ffff,
            {record: '  <ORV_object_paint id="0">\n    <op>\n      <GOP_Operator op_Operator="3" op_MaskMode="NONE">\n' +
                '      </GOP_Operator>\n    </op>\n    <clip>\n      <GGO_Vector gvf_X="1"/>\n      <GGO_Vector ' +
                'gvf_X="2"/>\n    </clip>\n  </ORV_object_paint>\n', ...change.first}),
        {kind: 'group_start', address: 'line:20', page: 1, parent: 1, op: 'multiply'},
        paint(1, [30, 30, 50, 50], 0x00ff00, {parent: 3, paint: 'rgb(0 1 0)'}),
        {kind: 'group_finish', address: 'line:30', page: 1, parent: 3},
        paint(2, [1, 1, 5, 5], 0xffffff, {op: 'darken', text: 'Nothing to see', warnings: ['a warning of the logger']}),
        {kind: 'resource_paint', address: 'line:50', page: 1, parent: 1, box: [60, 60, 90, 70]},
        paint(3, [2, 0, 3, 10], 0x0000ff, {page: 0, parent: 7}),
        {kind: 'drawing_finish', address: 'line:70', page: 1, parent: 1},
        paint(4, [12, 12, 14, 14], 0x808080, {clips: 2, clip: [12, 12, 14, 14], paint: 'gray(0.5)',
            clipShapes: [{d: square(5, 5, 14, 14)}, {d: square(12, 12, 60, 60)}]}),
    ];
    const effects = {call: [2, 4, 5, 6, 7, 8, 10], pixels: [900, 400, 400, 0, 30, 10, 4],
        area: [[10, 10, 40, 40], [30, 30, 50, 50], [30, 30, 50, 50], null, [62, 60, 83, 70], [2, 0, 3, 10],
            [12, 12, 14, 14]], why: [-1, -1, -1, 1, -1, -1, -1],
        of: [-1, -1, -1, 3, -1, -1, -1]};
    return {calls, page: drawing.page(1, 1, effects), kinds: KINDS};
}

export function smallReport() {
    const blocks = new Blocks();
    const job = smallJob(blocks);
    return assemble(indexOf([logOf(blocks, job.kinds, job.calls, [job.page], {})]), blocks);
}

/** Two pages without steps, and a call on the second one. */
export function stillReport() {
    const blocks = new Blocks();
    const job = smallJob(blocks);
    const still = {...job.page, steps: null, effects: null};
    const calls = job.calls.concat({kind: 'face_start', address: 'line:90', page: 2, parent: 0},
        paint(5, [1, 1, 9, 9], 0x123456, {page: 2, parent: 11}));
    const log = logOf(blocks, job.kinds, calls, [still, {...still, page: 2, picture: null, note: 'not finished'}], {cut: true,
        in_flight: {text: 'ORV_object_paint 5, line 99', call: 12}, warnings: {count: 3, texts: [['odd', 2], ['strange', 1]]},
        damage: {count: 1, first: [{line: 7, byte: 300, text: 'a tag is open'}]}});
    return assemble(indexOf([log]), blocks);
}

/** Two logs of the small job, of which the second has another colour in its first paint. */
export function twoReport() {
    const blocks = new Blocks();
    const one = smallJob(blocks);
    const two = smallJob(blocks, {colour: 0xff00ffff});
    two.calls[2].record = two.calls[2].record.replace('gvf_X="2"', 'gvf_X="7"');
    const rows = {kind: one.calls.map(() => 0), a: one.calls.map((_, i) => i), b: one.calls.map((_, i) => i),
        moved: one.calls.map(() => -1), twice: one.calls.map(() => 0), differences: one.calls.map(() => 0)};
    rows.kind[2] = 1;
    rows.differences[2] = [['clip/GGO_Vector[2]', 'gvf_X', '2', '7', 0, 0]];
    rows.kind[10] = 2;
    rows.b[10] = -1;
    two.calls.pop();
    const compare = {counts: {same: 9, changed: 1, missing: 1, added: 0}, roots: [], note: null,
        blocks: [{first: 0, count: rows.kind.length, list: blocks.json(rows)}],
        pages: [{a: 1, b: 1, same: false, pixels: 796, area: [10, 10, 40, 40], first: 900, call_a: '0', call_b: '0',
            cause_a: '0', cause_b: '0', in_layer: false, at_end: false, picture: null}]};
    const logs = [[one, 'good.xml'], [two, 'bad.xml']].map(([job, name]) => logOf(blocks, job.kinds, job.calls,
        [job.page], {name}));
    return assemble(indexOf(logs, compare), blocks);
}

export const HOSTILE = '</script><script>window.hurt = 1</script><img src=x onerror="window.hurt = 2">"\'&amp;\u0000\u202egnp\u2066';

/** All that a log can say is hostile, and the log's own name is a megabyte long. */
export function hostileReport() {
    const blocks = new Blocks();
    const job = smallJob(blocks);
    const huge = HOSTILE.repeat(Math.ceil(1e6 / HOSTILE.length));
    const kinds = job.kinds.map(kind => kind === 'object_paint' ? HOSTILE : kind);
    const calls = job.calls.map(call => ({...call, kind: call.kind === 'object_paint' ? HOSTILE : call.kind,
        op: HOSTILE, paint: HOSTILE, text: huge, warnings: [HOSTILE], objects: [0, 1],
        record: '  <ORV_x a="' + HOSTILE + '" b="&lt;script&gt;">\n' + HOSTILE + '\n  </ORV_x>\n' + HOSTILE}));
    const objects = {count: 2, left_out: 5, blocks: [{first: 0, count: 2, list: blocks.json({kind: ['ticket', 'image'],
        label: [HOSTILE, huge], call: [2, 2], uses: [1, 1], width: [0, 0], height: [0, 0], picture: [null, null],
        d: [null, null], view: [null, null], stops: [null, null], content: [HOSTILE, null], note: [null, HOSTILE]})}]};
    const log = logOf(blocks, kinds, calls, [{...job.page, note: HOSTILE}], {name: huge, cut: true, garbled: true, objects,
        damage: {count: 1, first: [{line: 1, byte: 1, text: huge}]}, in_flight: {text: HOSTILE, call: 10},
        warnings: {count: 1, texts: [[HOSTILE, 1]]}, notes: [HOSTILE], versions: [[HOSTILE, HOSTILE]],
        figures: [{title: HOSTILE, rows: [[HOSTILE, HOSTILE]]}]});
    return assemble(indexOf([log]), blocks);
}

/** A page of so many paints. */
export function largeReport(count) {
    const blocks = new Blocks();
    const drawing = new Drawing(blocks, 400, 300, 4096);
    const calls = [{kind: 'document_start'}, {kind: 'face_start', page: 1, parent: 0}];
    const effects = {call: [], pixels: [], area: [], why: [], of: []};
    for (let i = 0; i < count; ++i) {
        const box = [i % 380, (i * 7) % 280, i % 380 + 12, (i * 7) % 280 + 12];
        const colour = (i * 2654435761) & 0xffffff;
        drawing.fill(i + 2, box, (0xff000000 | colour) >>> 0);
        calls.push(paint(i, box, colour, {text: i % 100 === 0 ? 'text ' + i : undefined}));
        effects.call.push(i + 2);
        effects.pixels.push(144);
        effects.area.push(box);
        effects.why.push(-1);
        effects.of.push(-1);
    }
    const page = drawing.page(1, 1, effects);
    return assemble(indexOf([logOf(blocks, KINDS, calls, [page], {})]), blocks);
}
