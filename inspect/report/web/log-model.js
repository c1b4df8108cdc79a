// A log as the report has it: its calls in columns, their tree, objects and pages.

const CALL_COLUMNS = ['address', 'line', 'byte', 'kind', 'page', 'parent', 'op', 'paint', 'text', 'colour', 'box',
    'clip', 'clips', 'warnings', 'objects', 'block', 'at', 'size', 'whole'];
const TEXT_COLUMNS = ['op', 'paint', 'text'];

class LogModel {
    /** @param {!Object} log as the index has it */
    constructor(log) {
        this.log = log;
        this.count = log.calls.count;
        this.column = {};
        this.why = new Map();  // what a call did to its pages, by call: {pixels, why, of, area, page}
        this.pageOf = new Map(log.pages.map(page => [page.page, page]));
    }

    /** Reads the lists of calls, which everything else needs. */
    async load() {
        for (const name of CALL_COLUMNS)
            this.column[name] = new Array(this.count);
        await Promise.all(this.log.calls.blocks.map(block => this.loadList(block)));
        await Promise.all(this.log.pages.map(page => this.loadEffects(page)));
    }

    async loadList(block) {
        const list = await blockJson(block.list);
        for (const name of CALL_COLUMNS) {
            const from = list[name];
            const to = this.column[name];
            const texts = TEXT_COLUMNS.includes(name);
            for (let i = 0; i < block.count; ++i)
                to[block.first + i] = texts ? (from[i] < 0 ? '' : list.strings[from[i]]) : from[i];
        }
        const warnings = this.column.warnings;
        for (let i = block.first; i < block.first + block.count; ++i)
            warnings[i] = warnings[i] === 0 ? [] : warnings[i].map(place => list.strings[place]);
    }

    async loadEffects(page) {
        if (!page.effects)
            return;
        const effects = await blockJson(page.effects);
        for (let row = 0; row < effects.call.length; ++row) {
            const call = effects.call[row];
            const before = this.why.get(call);
            const pixels = effects.pixels[row] + (before ? before.pixels : 0);
            const why = pixels > 0 ? -1 : effects.why[row];
            this.why.set(call, {page: page.page, pixels, why, of: effects.of ? effects.of[row] : -1, area: effects.area[row]});
        }
    }

    kind(call) {
        return this.log.kinds[this.column.kind[call]];
    }

    address(call) {
        return this.column.address[call];
    }

    /** Painted somewhere, and changed no pixel. */
    changesNothing(call) {
        const effect = this.why.get(call);
        return effect !== undefined && effect.pixels === 0;
    }

    /** The page on which something is to be seen of a call: its own, or the first on which its resource is painted. */
    pageFor(call) {
        const effect = this.why.get(call);
        return this.column.page[call] || (effect ? effect.page : 0);
    }

    findAddress(address) {
        return this.column.address.indexOf(address);
    }

    async record(call) {
        const block = this.column.block[call];
        if (block < 0)
            return null;
        const bytes = await blockBytes(this.log.texts[block]);
        const at = this.column.at[call];
        return new TextDecoder().decode(bytes.subarray(at, at + this.column.size[call]));
    }

    /** What a call paints, and its clips, as outlines. */
    async outlines(call) {
        const block = this.log.calls.blocks.find(one => call >= one.first && call < one.first + one.count);
        if (!block || !block.shapes)
            return {shape: [], clip: []};
        const shapes = await blockJson(block.shapes);
        const chosen = column => (column[call - block.first] || []).map(place => shapes.outlines[place]);
        return {shape: chosen(shapes.shape), clip: chosen(shapes.clip)};
    }

    async object(place) {
        const block = this.log.objects.blocks.find(one => place >= one.first && place < one.first + one.count);
        const list = await blockJson(block.list);
        const object = {place};
        for (const [name, column] of Object.entries(list))
            if (name !== 'strings')
                object[name] = column[place - block.first];
        return object;
    }
}

/** "#rrggbb" of 0xRRGGBB. */
function hexColour(number) {
    return '#' + (number >>> 0).toString(16).padStart(6, '0');
}
