// The page as it is behind any of its steps.

// Copies of what was drawn, so that a step back needn't begin with the last key picture.
const COPY_EVERY = 1 << 20;
const COPIED_BYTES = 192 << 20;

class StepPlayer {
    /** @param {!PageSteps} steps loaded */
    constructor(steps) {
        this.steps = steps;
        this.step = -1;
        this.stack = [];
        this.copies = [];
        this.changedSinceCopy = 0;
        this.working = Promise.resolve();
    }

    /**
     * Goes to a step; of several calls that wait only the last one is carried out.
     * @return {!Promise<boolean>} whether it has been
     */
    goTo(step) {
        this.wanted = step;
        const done = this.working.then(async () => {
            if (this.wanted !== step)
                return false;
            await this.seek(step);
            return true;
        });
        this.working = done.catch(() => false);
        return done;
    }

    async seek(step) {
        const start = this.startFor(step);
        // All that is needed is read at the same time.
        const first = start === null ? this.step + 1 : start.step + 1;
        const read = [];
        for (let index = this.steps.chunkOf(first); first <= step && index <= this.steps.chunkOf(step); ++index)
            read.push(this.steps.chunk(index));
        if (start !== null)
            await this.begin(start);
        await Promise.all(read);
        while (this.step < step) {
            const chunk = await this.steps.chunk(this.steps.chunkOf(this.step + 1));
            const end = Math.min(step, chunk.first + chunk.at.length - 2);
            while (this.step < end)
                this.apply(chunk, this.step + 1);
        }
    }

    /** Where to begin for a step: a copy, a chunk with a key, or null to go on from where it is. */
    startFor(step) {
        const chunks = this.steps.steps.chunks;
        let index = this.steps.chunkOf(step);
        while (index > 0 && !chunks[index].key)
            --index;
        const copy = this.copies.filter(one => one.step <= step).reduce(
            (best, one) => best === null || one.step > best.step ? one : best, null);
        const start = copy && copy.step >= chunks[index].first ? {step: copy.step, copy} :
            {step: chunks[index].first - 1, index};
        return this.step <= step && this.step >= start.step ? null : start;
    }

    async begin(start) {
        if (start.copy) {
            this.step = start.step;
            this.stack = start.copy.stack.map(surface => this.copyOf(surface));
            return;
        }
        const chunk = this.steps.steps.chunks[start.index];
        this.step = chunk.first - 1;
        this.stack = [];
        this.changedSinceCopy = 0;
        if (!chunk.key)
            return;
        const pixels = await keptBlock(chunk.key, 'key',
            bytes => new Uint32Array(bytes.buffer, bytes.byteOffset, bytes.length >> 2));
        let at = 0;
        for (const surface of this.surfacesBehind(chunk.first - 1)) {
            const size = surface.width * surface.height;
            this.push(surface, pixels.slice(at, at + size));
            at += size;
        }
    }

    /** The surfaces that are there behind a step, the page first. */
    surfacesBehind(step) {
        const found = [];
        for (let index = 0; index < this.steps.surfaces.kind.length; ++index) {
            const surface = this.steps.surface(index);
            if (surface.first <= step && surface.last >= step)
                found.push(surface);
        }
        return found;
    }

    push(surface, pixels) {
        const whole = [surface.x, surface.y, surface.x + surface.width, surface.y + surface.height];
        this.stack.push(Object.assign(surface, {pixels, stale: whole, canvas: null}));
    }

    copyOf(surface) {
        const whole = [surface.x, surface.y, surface.x + surface.width, surface.y + surface.height];
        return Object.assign({}, surface, {pixels: surface.pixels.slice(), stale: whole, canvas: null});
    }

    apply(chunk, step) {
        const table = this.steps.table;
        while (this.stack.length > 0 && this.stack[this.stack.length - 1].last < step)
            this.stack.pop();
        if (table.kind[step] === BEGINS) {
            const surface = this.steps.surface(table.surface[step]);
            const pixels = new Uint32Array(surface.width * surface.height);
            if (surface.kind === PAGE_SURFACE)
                pixels.fill(WHITE);
            this.push(surface, pixels);
        }
        this.step = step;
        if (table.pixels[step] > 0)
            this.change(chunk, step, this.stack.find(one => one.index === table.surface[step]));
    }

    change(chunk, step, surface) {
        if (!surface)
            throw new Error('step ' + step + ' changes a surface that is not there');
        const {x: left, y: top, width, pixels} = surface;
        const colours = chunk.pixels;
        this.steps.eachRun(chunk, step, (x, y, length, from) => {
            let to = (y - top) * width + (x - left);
            for (const end = to + length; to < end; ++to)
                pixels[to] = colours[from++];
        });
        const area = this.steps.table.area[step];
        const stale = surface.stale;
        surface.stale = stale === null ? area.slice() : [Math.min(stale[0], area[0]), Math.min(stale[1], area[1]),
            Math.max(stale[2], area[2]), Math.max(stale[3], area[3])];
        this.changedSinceCopy += this.steps.table.pixels[step];
        if (this.changedSinceCopy >= COPY_EVERY)
            this.keepCopy();
    }

    keepCopy() {
        this.changedSinceCopy = 0;
        if (this.copies.some(one => one.step === this.step))
            return;
        const copy = {step: this.step, stack: this.stack.map(surface => this.copyOf(surface))};
        this.copies.push(copy);
        const bytes = copy.stack.reduce((sum, surface) => sum + surface.pixels.byteLength, 0);
        while (this.copies.length > 1 && this.copies.length * bytes > COPIED_BYTES)
            this.copies.shift();
    }

    /**
     * Draws what is there: the page, and on it the layers and cells that aren't put on it yet.
     * @param {!CanvasRenderingContext2D} context of a canvas as large as the page
     * @param {function(number): ?Array<number>} boxOf where on the page the content of a surface belongs
     */
    draw(context, boxOf) {
        let transform = new DOMMatrix();
        for (const surface of this.stack) {
            this.refresh(surface);
            if (surface.kind !== CELL) {
                context.setTransform(transform);
                context.drawImage(surface.canvas, surface.x, surface.y);
                continue;
            }
            const [xx, yx, xy, yy, x0, y0] = surface.toCell;
            transform = transform.multiply(new DOMMatrix([xx, yx, xy, yy, x0, y0]).inverse());
            drawRepeated(context, surface.canvas, transform, boxOf(surface.first));
        }
        context.setTransform(1, 0, 0, 1, 0, 0);
    }

    /** Brings what changed of a surface into its canvas. */
    refresh(surface) {
        if (!surface.canvas)
            surface.canvas = make('canvas', {width: surface.width, height: surface.height});
        if (surface.stale === null)
            return;
        const [x0, y0, x1, y1] = surface.stale;
        surface.stale = null;
        if (x1 <= x0 || y1 <= y0)
            return;
        const picture = new ImageData(x1 - x0, y1 - y0);
        const to = new Uint32Array(picture.data.buffer);
        let at = 0;
        for (let y = y0; y < y1; ++y) {
            let from = (y - surface.y) * surface.width + (x0 - surface.x);
            for (let x = x0; x < x1; ++x)
                to[at++] = canvasColour(surface.pixels[from++]);
        }
        surface.canvas.getContext('2d').putImageData(picture, x0 - surface.x, y0 - surface.y);
    }
}

/** 0xAARRGGBB, multiplied by alpha, as the bytes of red, green, blue and alpha, which aren't. */
function canvasColour(colour) {
    const alpha = colour >>> 24;
    let red = (colour >>> 16) & 0xff;
    let green = (colour >>> 8) & 0xff;
    let blue = colour & 0xff;
    if (alpha !== 255 && alpha !== 0) {
        red = Math.min(255, ((red * 255 + (alpha >> 1)) / alpha) | 0);
        green = Math.min(255, ((green * 255 + (alpha >> 1)) / alpha) | 0);
        blue = Math.min(255, ((blue * 255 + (alpha >> 1)) / alpha) | 0);
    }
    return ((alpha << 24) | (blue << 16) | (green << 8) | red) >>> 0;
}
