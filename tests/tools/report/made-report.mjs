// Reports made by hand, from what inspect/report/data-format.md tells: so that the page is held to that, and can be shown
// logs that no program writes.

import {createHash} from 'node:crypto';
import {readFileSync} from 'node:fs';
import {join} from 'node:path';
import {pngFile} from './png.mjs';
import {deflateSync} from 'node:zlib';

const WEB = new URL('../../../inspect/report/web/', import.meta.url).pathname;

export class Blocks {
    constructor() {
        this.elements = [];
    }

    add(bytes, coding = 'deflate') {
        const name = 'b' + this.elements.length;
        const data = coding === 'deflate' ? deflateSync(bytes) : Buffer.from(bytes);
        this.elements.push(`<script type="application/octet-stream;base64" id="${name}" data-coding="${coding}">` +
            `${data.toString('base64')}</script>`);
        return name;
    }

    json(value) {
        return this.add(Buffer.from(JSON.stringify(value)));
    }

    words(values) {
        return this.add(Buffer.from(Uint32Array.from(values).buffer));
    }

    png(width, height, words) {
        const rows = Buffer.alloc(height * (1 + 4 * width));
        for (let y = 0; y < height; ++y)
            for (let x = 0; x < width; ++x) {
                const word = words[y * width + x];
                const at = y * (1 + 4 * width) + 1 + 4 * x;
                rows[at] = (word >>> 16) & 255;
                rows[at + 1] = (word >>> 8) & 255;
                rows[at + 2] = word & 255;
                rows[at + 3] = word >>> 24;
            }
        return this.add(pngFile(width, height, 6, [], rows), 'none');
    }
}

/** The HTML of a report. */
export function assemble(index, blocks) {
    const json = JSON.stringify(index).replace(/[<>&]|[^\x20-\x7e]/g,
        character => '\\u' + character.charCodeAt(0).toString(16).padStart(4, '0'));
    return assembleParts(blocks.elements.join('\n') + `\n<script type="application/json" id="index">${json}</script>`);
}

/** The page, with its data as markup. */
export function assembleParts(data) {
    const list = readFileSync(join(WEB, 'sources.cmake'), 'utf8').match(/[\w-]+\.js/g);
    const script = list.map(name => readFileSync(join(WEB, name), 'utf8')).join('');
    const style = readFileSync(join(WEB, 'report.css'), 'utf8');
    const hash = text => `'sha256-${createHash('sha256').update(text).digest('base64')}'`;
    const parts = {
        policy: `<meta http-equiv="Content-Security-Policy" content="default-src 'none'; img-src data: blob:; ` +
            `script-src ${hash(script)}; style-src ${hash(style)}; base-uri 'none'; form-action 'none'">`,
        title: '<title>Report</title>', style: `<style>${style}</style>`, script: `<script>${script}</script>`, data,
    };
    return readFileSync(join(WEB, 'page.html'), 'utf8').replace(/<!--(\w+)-->/g, (_, name) => parts[name]);
}

/** Draws boxes on surfaces, and notes what changed in each step. */
export class Drawing {
    constructor(blocks, width, height, chunkSize = 4) {
        Object.assign(this, {blocks, width, height, chunkSize, stack: [], chunks: []});
        this.table = {kind: [], call: [], by: [], frame: [], surface: [], pixels: [], area: []};
        this.surfaces = {kind: [], below: [], first: [], last: [], x: [], y: [], width: [], height: [], to_cell: [],
            reach: []};
        this.frames = {call: [], outside: []};
        this.runs = [];
        this.pixels = [];
        this.begin(0, -1, 0, 0, width, height);
    }

    begin(kind, call, x, y, width, height, toCell = null) {
        const below = this.stack.length > 0 ? this.stack.at(-1).index : -1;
        const index = this.surfaces.kind.length;
        this.step(0, call, -1, index, () => {
            this.stack.push({index, x, y, width, height, data: new Uint32Array(width * height).fill(kind === 0 ? 0xffffffff : 0)});
            const first = this.table.kind.length;
            const row = {kind, below, first, last: first, x, y, width, height, to_cell: toCell, reach: toCell ? 1 : 0};
            for (const [name, value] of Object.entries(row))
                this.surfaces[name].push(value);
        }, []);
    }

    frame(call) {
        this.frames.call.push(call);
        this.frames.outside.push(this.open ?? -1);
        this.open = this.frames.call.length - 1;
    }

    leave() {
        this.open = this.frames.outside[this.open] === -1 ? undefined : this.frames.outside[this.open];
    }

    /** Paints a box with a colour, multiplied by alpha; what has it already isn't changed. */
    fill(call, [x0, y0, x1, y1], colour, kind = 1, by = -1) {
        const top = this.stack.at(-1);
        const changed = [];
        for (let y = y0; y < y1; ++y)
            for (let x = x0; x < x1; ++x) {
                const at = (y - top.y) * top.width + x - top.x;
                if (top.data[at] !== colour) {
                    top.data[at] = colour;
                    changed.push([x, y, colour]);
                }
            }
        this.step(kind, call, by, top.index, () => {}, changed);
    }

    /** Puts the uppermost surface on the one below, where it has any colour. */
    put(call, by, kind = 2, toPage = (x, y) => [[x, y]]) {
        const top = this.stack.pop();
        this.surfaces.last[top.index] = this.table.kind.length - 1;
        this.ended = [top];
        const below = this.stack.at(-1);
        const changed = [];
        for (let y = 0; y < top.height; ++y)
            for (let x = 0; x < top.width; ++x) {
                const colour = top.data[y * top.width + x];
                for (const [px, py] of colour ? toPage(x + top.x, y + top.y) : []) {
                    const at = (py - below.y) * below.width + px - below.x;
                    if (below.data[at] !== colour)
                        changed.push([px, py, colour]);
                    below.data[at] = colour;
                }
            }
        changed.sort((a, b) => a[1] - b[1] || a[0] - b[0]);
        this.step(kind, call, by, below.index, () => {}, changed);
    }

    step(kind, call, by, surface, act, changed) {
        if (this.table.kind.length % this.chunkSize === 0)
            this.endChunk();
        this.ended = [];
        act();
        const area = changed.length === 0 ? null : [Math.min(...changed.map(one => one[0])), changed[0][1],
            Math.max(...changed.map(one => one[0])) + 1, changed.at(-1)[1] + 1];
        const row = {kind, call, by, frame: this.open ?? -1, surface, pixels: changed.length, area};
        for (const [name, value] of Object.entries(row))
            this.table[name].push(value);
        for (const one of this.stack)
            this.surfaces.last[one.index] = this.table.kind.length - 1;
        if (area)
            this.tellRuns(area, changed);
    }

    tellRuns(area, changed) {
        const runs = [];
        for (const [x, y, colour] of changed) {
            const last = runs.at(-1);
            if (last && last[1] === y && last[0] + last[2] === x)
                ++last[2];
            else
                runs.push([x, y, 1]);
            this.pixels.push(colour);
        }
        this.number(runs.length);
        let [x, y] = area;
        for (const run of runs) {
            if (run[1] !== y)
                x = area[0];
            this.number(run[1] - y);
            this.number(run[0] - x);
            this.number(run[2]);
            [x, y] = [run[0] + run[2], run[1]];
        }
    }

    number(value) {
        for (; value > 127; value >>>= 7)
            this.runs.push(value & 127 | 128);
        this.runs.push(value);
    }

    endChunk() {
        const first = this.table.kind.length;
        this.finishChunk(first);
        this.keyed = first === 0 ? null : this.blocks.words(
            this.stack.concat(this.ended ?? []).flatMap(one => Array.from(one.data)));
        this.chunkFirst = first;
    }

    finishChunk(end) {
        if (this.chunkFirst !== undefined)
            this.chunks.push({first: this.chunkFirst, count: end - this.chunkFirst,
                runs: this.blocks.add(Buffer.from(this.runs)), pixels: this.blocks.words(this.pixels), key: this.keyed});
        this.runs = [];
        this.pixels = [];
    }

    /** The page as the index has it. */
    page(number, call, effects) {
        this.finishChunk(this.table.kind.length);
        const page = this.stack[0];
        return {
            page: number, call, width: this.width, height: this.height, dpi: [96, 96],
            picture: this.blocks.png(this.width, this.height, page.data), note: null,
            steps: {count: this.table.kind.length, table: this.blocks.json(this.table),
                surfaces: this.blocks.json(this.surfaces), frames: this.blocks.json(this.frames), chunks: this.chunks,
                note: null},
            effects: this.blocks.json(effects),
        };
    }
}

/** Calls, as records with what differs from a plain one, as the columns of a list. */
export function callList(blocks, kinds, calls) {
    const strings = [];
    const text = value => value === undefined ? -1 : strings.push(value) - 1;
    const records = [];
    let at = 0;
    const list = {address: [], line: [], byte: [], kind: [], page: [], parent: [], op: [], paint: [], text: [], colour: [],
        box: [], clip: [], clips: [], warnings: [], objects: [], block: [], at: [], size: [], whole: [], strings};
    const outlines = [];
    const shapes = {shape: [], clip: [], outlines};
    calls.forEach((call, index) => {
        const record = Buffer.from(call.record ?? `  <ORV_${call.kind} line="${index}">\n  </ORV_${call.kind}>\n`);
        const row = {
            address: call.address ?? 'line:' + (index + 2), line: index + 2, byte: 100 * index,
            kind: kinds.indexOf(call.kind), page: call.page ?? 0, parent: call.parent ?? -1, op: text(call.op),
            paint: text(call.paint), text: text(call.text), colour: call.colour ?? -1, box: call.box ?? null,
            clip: call.clip ?? null, clips: call.clips ?? 0, warnings: call.warnings ? call.warnings.map(text) : 0,
            objects: call.objects ?? 0, block: 0, at, size: record.length, whole: call.whole ?? record.length,
        };
        for (const [name, value] of Object.entries(row))
            list[name].push(value);
        for (const [name, given] of [['shape', call.shapes], ['clip', call.clipShapes]])
            shapes[name].push(given ? given.map(one => outlines.push(
                {rule: 'nonzero', stroke: null, inside: true, cut: false, ...one}) - 1) : 0);
        records.push(record);
        at += record.length;
    });
    return {
        calls: {count: calls.length, of: calls.length,
            blocks: [{first: 0, count: calls.length, list: blocks.json(list), shapes: blocks.json(shapes)}]},
        texts: [blocks.add(Buffer.concat(records))],
    };
}

export const NO_OBJECTS = {count: 0, left_out: 0, blocks: []};

export function logOf(blocks, kinds, calls, pages, more) {
    return {
        name: 'made.xml', bytes: 1234, sha256: 'ab'.repeat(32), form: 'plain', cut: false, garbled: false,
        damage: {count: 0, first: []}, in_flight: null, warnings: {count: 0, texts: []}, notes: [],
        versions: [['log_version', '2']], figures: [{title: 'calls', rows: [['object_paint', calls.length]]}], kinds,
        page_count: pages.length, ...callList(blocks, kinds, calls), objects: NO_OBJECTS, pages, ...more,
    };
}

export function indexOf(logs, compare = null) {
    return {format: 1, program: 'orvlog', version: '1.0.0', logs, compare,
        reasons: ['clipped away', 'transparent', 'same colour']};
}
