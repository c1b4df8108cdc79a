// What is marked on a page: the pixels that a call changed, and those in which two pages differ.

const CHANGED_MARK = [230, 0, 122, 150];
const DIFFERENCE_MARK = [255, 120, 0, 170];

function markWord([red, green, blue, alpha]) {
    return ((alpha << 24) | (blue << 16) | (green << 8) | red) >>> 0;
}

/** Marks the pixels that a call changed on a page, at the end of its group or resource, too. */
async function markChanged(context, steps, call, boxOf) {
    await steps.load();
    const changing = (steps.stepsOf.get(call) || []).filter(step => steps.table.pixels[step] > 0);
    const masks = new Map();
    for (const step of changing) {
        const index = steps.table.surface[step];
        if (!masks.has(index))
            masks.set(index, new SurfaceMask(steps, index, changing));
        const chunk = await steps.chunk(steps.chunkOf(step));
        masks.get(index).add(steps, chunk, step);
    }
    return () => {
        for (const mask of masks.values())
            mask.draw(context, steps, boxOf);
    };
}

/** Marks on one surface: on as much of it as is marked, or on a cell that repeats, whole. */
class SurfaceMask {
    constructor(steps, index, changing) {
        const surface = steps.surface(index);
        this.cells = [];
        for (let one = surface; one.kind !== PAGE_SURFACE && one.below >= 0; one = steps.surface(one.below))
            if (one.kind === CELL)
                this.cells.unshift(one);
        const areas = changing.filter(step => steps.table.surface[step] === index).map(step => steps.table.area[step]);
        const side = (of, place) => areas.reduce((far, area) => of(far, area[place]), areas[0][place]);
        this.box = this.cells.length > 0 ?
            [surface.x, surface.y, surface.x + surface.width, surface.y + surface.height] :
            [side(Math.min, 0), side(Math.min, 1), side(Math.max, 2), side(Math.max, 3)];
        this.width = this.box[2] - this.box[0];
        this.picture = new ImageData(this.width, this.box[3] - this.box[1]);
        this.words = new Uint32Array(this.picture.data.buffer);
    }

    add(steps, chunk, step) {
        const [left, top] = this.box;
        const word = markWord(CHANGED_MARK);
        steps.eachRun(chunk, step, (x, y, length) => {
            const at = (y - top) * this.width + (x - left);
            this.words.fill(word, at, at + length);
        });
    }

    draw(context, steps, boxOf) {
        const canvas = make('canvas', {width: this.picture.width, height: this.picture.height});
        canvas.getContext('2d').putImageData(this.picture, 0, 0);
        if (this.cells.length === 0) {
            context.drawImage(canvas, this.box[0], this.box[1]);
            return;
        }
        const toPage = this.cells.reduce((matrix, cell) => matrix.multiply(new DOMMatrix(cell.toCell).inverse()),
            new DOMMatrix());
        drawRepeated(context, canvas, toPage, boxOf(steps.table.call[this.cells[0].first]));
    }
}

/** Fills a box of the page with something that repeats. */
function drawRepeated(context, canvas, transform, box) {
    if (!Number.isFinite(transform.a))
        return;
    context.save();
    context.setTransform(1, 0, 0, 1, 0, 0);
    const [x0, y0, x1, y1] = box || [0, 0, context.canvas.width, context.canvas.height];
    const pattern = context.createPattern(canvas, 'repeat');
    pattern.setTransform(transform);
    context.fillStyle = pattern;
    context.fillRect(x0, y0, x1 - x0, y1 - y0);
    context.restore();
}

/** @return {?HTMLCanvasElement} the pixels in which two pictures differ, or which one of them lacks */
function differenceMask(first, second) {
    if (!first || !second)
        return null;
    const width = Math.max(first.width, second.width);
    const height = Math.max(first.height, second.height);
    const words = [first, second].map(picture => {
        const context = make('canvas', {width, height}).getContext('2d', {willReadFrequently: true});
        context.drawImage(picture, 0, 0);
        return new Uint32Array(context.getImageData(0, 0, width, height).data.buffer);
    });
    const mask = new ImageData(width, height);
    const to = new Uint32Array(mask.data.buffer);
    const word = markWord(DIFFERENCE_MARK);
    let count = 0;
    for (let i = 0; i < to.length; ++i)
        if (words[0][i] !== words[1][i]) {
            to[i] = word;
            ++count;
        }
    if (count === 0)
        return null;
    const canvas = make('canvas', {width, height});
    canvas.getContext('2d').putImageData(mask, 0, 0);
    return canvas;
}
