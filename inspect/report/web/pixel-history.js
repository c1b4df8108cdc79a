// Which calls changed a pixel, with its colour before and after each.

/** Where a pixel of the page is told on each surface, and the boxes in which a change of the surface counts for it. */
function placesOnSurfaces(steps, x, y) {
    const places = [];
    for (let index = 0; index < steps.surfaces.kind.length; ++index) {
        const surface = steps.surface(index);
        const below = places[surface.below];
        if (surface.kind === PAGE_SURFACE || !below)
            places.push({x, y, boxes: [[x, y, x + 1, y + 1]]});
        else if (surface.kind === LAYER)
            places.push({x: below.x, y: below.y, boxes: below.boxes});
        else
            places.push(placeInCell(surface, below));
        const place = places[index];
        const whole = [surface.x, surface.y, surface.x + surface.width, surface.y + surface.height];
        place.colour = !boxHolds(whole, place.x, place.y) ? null : surface.kind === PAGE_SURFACE ? WHITE : 0;
    }
    return places;
}

function placeInCell(cell, below) {
    const [xx, yx, xy, yy, x0, y0] = cell.toCell;
    const u = (below.x + 0.5) * xx + (below.y + 0.5) * xy + x0;
    const v = (below.x + 0.5) * yx + (below.y + 0.5) * yy + y0;
    const columns = rangesInCell(Math.floor(u - cell.reach), Math.ceil(u + cell.reach), cell.width);
    const rows = rangesInCell(Math.floor(v - cell.reach), Math.ceil(v + cell.reach), cell.height);
    return {
        x: wrapped(Math.floor(u), cell.width), y: wrapped(Math.floor(v), cell.height),
        boxes: rows.flatMap(([top, bottom]) => columns.map(([left, right]) => [left, top, right, bottom])),
    };
}

function wrapped(value, size) {
    return ((value % size) + size) % size;
}

/** A range, the end excluded, in something that repeats after `size`. */
function rangesInCell(from, to, size) {
    if (to - from >= size)
        return [[0, size]];
    const begin = wrapped(from, size);
    const end = begin + (to - from);
    return end <= size ? [[begin, end]] : [[0, end - size], [begin, size]];
}

/**
 * The changes of a pixel of the page, in the order in which they were made.
 * @return {!Promise<!Array<{kind: number, call: number, by: number, frame: number, before: ?number, after: ?number,
 *     layer: boolean, step: number}>>}
 */
async function pixelHistory(steps, x, y) {
    await steps.load();
    const places = placesOnSurfaces(steps, x, y);
    const table = steps.table;
    const entries = [];
    let chunk = null;
    let chunkIndex = -1;
    for (let step = 0; step < steps.count; ++step) {
        const place = places[table.surface[step]];
        const area = table.area[step];
        if (!area || !place || !(boxHolds(area, place.x, place.y) || place.boxes.some(box => boxesMeet(area, box))))
            continue;
        if (steps.chunkOf(step) !== chunkIndex) {
            chunkIndex = steps.chunkOf(step);
            chunk = await steps.chunk(chunkIndex);
        }
        const before = place.colour;
        if (changePlace(steps, chunk, step, place) && table.kind[step] >= PAINTED && table.kind[step] <= CELL_PUT)
            addEntry(entries, steps, step, before, place.colour);
    }
    return entries;
}

/** Takes over the colour that a step leaves at a place; whether it changed one that counts for it. */
function changePlace(steps, chunk, step, place) {
    let counts = false;
    steps.eachRun(chunk, step, (x, y, length, from) => {
        const run = [x, y, x + length, y + 1];
        if (place.colour !== null && boxHolds(run, place.x, place.y))
            place.colour = chunk.pixels[from + place.x - x];
        counts = counts || place.boxes.some(box => boxesMeet(run, box));
    });
    return counts;
}

function addEntry(entries, steps, step, before, after) {
    const table = steps.table;
    const last = entries[entries.length - 1];
    const entry = {
        kind: table.kind[step], call: table.call[step], by: table.by[step], frame: table.frame[step], before, after,
        layer: steps.surfaces.kind[table.surface[step]] !== PAGE_SURFACE, step,
    };
    if (last && entry.kind === PAINTED && last.kind === PAINTED && last.call === entry.call &&
        last.frame === entry.frame) {
        last.after = after;
        last.step = step;
    } else {
        entries.push(entry);
    }
}

/** The calls that began the frames around something, the innermost first. */
function framesAround(steps, frame) {
    const calls = [];
    for (; frame >= 0; frame = steps.frames.outside[frame])
        calls.push(steps.frames.call[frame]);
    return calls;
}
