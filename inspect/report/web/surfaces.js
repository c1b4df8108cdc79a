// The steps in which a page is drawn, and which pixels of which surface each of them changed.

const BEGINS = 0, PAINTED = 1, GROUP_PUT = 2, CELL_PUT = 3, PART = 4;
const PAGE_SURFACE = 0, LAYER = 1, CELL = 2;
const WHITE = 0xffffffff;
const MOST_PLACES = 200;

/** A box `[x0, y0, x1, y1]` without its last column and row. */
function boxHolds(box, x, y) {
    return x >= box[0] && x < box[2] && y >= box[1] && y < box[3];
}

function boxesMeet(a, b) {
    return a[0] < b[2] && b[0] < a[2] && a[1] < b[3] && b[1] < a[3];
}

class PageSteps {
    /** @param {!Object} steps of a page, as the index has them */
    constructor(steps) {
        this.steps = steps;
        this.count = steps.count;
        this.loading = null;
    }

    load() {
        if (!this.loading)
            this.loading = this.read();
        return this.loading;
    }

    async read() {
        const [table, surfaces, frames] = await Promise.all(
            [this.steps.table, this.steps.surfaces, this.steps.frames].map(blockJson));
        this.table = table;
        this.surfaces = surfaces;
        this.frames = frames;
        this.stepsOf = new Map();
        for (let step = 0; step < this.count; ++step) {
            this.note(table.call[step], step);
            if (table.by[step] !== table.call[step])
                this.note(table.by[step], step);
        }
        return this;
    }

    note(call, step) {
        if (call < 0)
            return;
        const row = this.stepsOf.get(call);
        if (row)
            row.push(step);
        else
            this.stepsOf.set(call, [step]);
    }

    /** The last step of a call, or of those before it; -1 if none is. */
    stepBehind(call) {
        const own = this.stepsOf.get(call);
        if (own)
            return own[own.length - 1];
        let found = -1;
        for (let step = 0; step < this.count; ++step)
            if (this.table.call[step] >= 0 && this.table.call[step] < call)
                found = step;
        return found;
    }

    /** The calls around the steps of a call, of each the innermost one that `holds`: the first ones of many. */
    paintedIn(call, holds) {
        const found = new Set();
        for (const step of this.stepsOf.get(call) || []) {
            let frame = this.table.frame[step];
            while (frame >= 0 && !holds(this.frames.call[frame]))
                frame = this.frames.outside[frame];
            if (frame >= 0)
                found.add(this.frames.call[frame]);
            if (found.size >= MOST_PLACES)
                break;
        }
        return Array.from(found);
    }

    chunkOf(step) {
        let low = 0;
        let high = this.steps.chunks.length - 1;
        while (low < high) {
            const middle = (low + high + 1) >> 1;
            if (this.steps.chunks[middle].first <= step)
                low = middle;
            else
                high = middle - 1;
        }
        return low;
    }

    /** What changed in the steps of a chunk: the places at which those of each step begin, too. */
    async chunk(index) {
        const chunk = this.steps.chunks[index];
        const [runs, pixels] = await Promise.all([
            keptBlock(chunk.runs, 'runs', bytes => ({bytes, at: this.findRuns(chunk, bytes)})),
            keptBlock(chunk.pixels, 'pixels',
                bytes => new Uint32Array(bytes.buffer, bytes.byteOffset, bytes.length >> 2)),
        ]);
        return {first: chunk.first, bytes: runs.bytes, at: runs.at.runs, pixelAt: runs.at.pixels, pixels};
    }

    findRuns(chunk, bytes) {
        const runs = new Uint32Array(chunk.count + 1);
        const pixels = new Uint32Array(chunk.count + 1);
        let at = 0;
        let pixel = 0;
        for (let i = 0; i < chunk.count; ++i) {
            runs[i] = at;
            pixels[i] = pixel;
            const changed = this.table.pixels[chunk.first + i];
            if (changed === 0)
                continue;
            pixel += changed;
            let numbers = 0;
            for (let shift = 0;; shift += 7) {
                const byte = bytes[at++];
                numbers |= (byte & 0x7f) << shift;
                if (byte < 0x80 || at > bytes.length)
                    break;
            }
            for (numbers *= 3; numbers > 0 && at < bytes.length; ++at)
                numbers -= bytes[at] < 0x80 ? 1 : 0;
        }
        runs[chunk.count] = at;
        pixels[chunk.count] = pixel;
        return {runs, pixels};
    }

    /**
     * Tells each run of pixels that a step of a chunk changed.
     * @param {function(number, number, number, number)} tell column, row, length, and the place of the first colour
     */
    eachRun(chunk, step, tell) {
        if (this.table.pixels[step] === 0)
            return;
        const bytes = chunk.bytes;
        let at = chunk.at[step - chunk.first];
        const end = chunk.at[step - chunk.first + 1];
        let pixel = chunk.pixelAt[step - chunk.first];
        const area = this.table.area[step];
        let y = area[1];
        let x = area[0];
        const next = () => {
            let value = 0;
            for (let shift = 0; at < end; shift += 7) {
                const byte = bytes[at++];
                value |= (byte & 0x7f) << shift;
                if (byte < 0x80)
                    break;
            }
            return value;
        };
        for (let count = next(); count > 0 && at < end; --count) {
            const down = next();
            if (down > 0) {
                y += down;
                x = area[0];
            }
            x += next();
            const length = next();
            tell(x, y, length, pixel);
            x += length;
            pixel += length;
        }
    }

    surface(index) {
        const columns = this.surfaces;
        return {
            index, kind: columns.kind[index], below: columns.below[index], first: columns.first[index],
            last: columns.last[index], x: columns.x[index], y: columns.y[index], width: columns.width[index],
            height: columns.height[index], toCell: columns.to_cell[index], reach: columns.reach[index],
        };
    }
}

/** "#rrggbb" of a colour with its channels multiplied by alpha; with alpha behind it if that is asked for. */
function colourText(colour, withAlpha) {
    if (colour === null)
        return '-';
    const alpha = colour >>> 24;
    const channel = shift => {
        const value = (colour >>> shift) & 0xff;
        return alpha === 0 ? 0 : Math.min(255, Math.floor((value * 255 + (alpha >> 1)) / alpha));
    };
    const two = value => value.toString(16).padStart(2, '0');
    return '#' + two(channel(16)) + two(channel(8)) + two(channel(0)) + (withAlpha ? two(alpha) : '');
}
