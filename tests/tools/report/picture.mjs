// Makes the picture of a report that stands in README.md, of the report of docs/sample.pdf:
//
//     node picture.mjs MODULES REPORT.html OUT.png

import {writeFileSync} from 'node:fs';
import {resolve} from 'node:path';
import {Browser, clickPixel, findBrowser} from './browser.mjs';
import {pngFile} from './png.mjs';

const [modules, report, out] = process.argv.slice(2);
const browser = await Browser.start(findBrowser(modules));
const page = await browser.open(resolve(report), {viewport: {width: 1340, height: 800}, colorScheme: 'light'});
await clickPixel(page, 226, 775);
await page.focus('#touches-0');
for (let i = 0; i < 3; ++i)
    await page.keyboard.press('ArrowDown');
await page.keyboard.press('0');
await page.waitForTimeout(500);
const picture = (await page.screenshot()).toString('base64');

/** The picture's pixels as places in a palette: the 256 commonest colours, and the nearest of these for the others. */
const [width, height, palette, places] = await page.evaluate(async base64 => {
    const bytes = Uint8Array.from(atob(base64), character => character.charCodeAt(0));
    const bitmap = await createImageBitmap(new Blob([bytes], {type: 'image/png'}));
    const canvas = document.createElement('canvas');
    canvas.width = bitmap.width;
    canvas.height = bitmap.height;
    const context = canvas.getContext('2d');
    context.drawImage(bitmap, 0, 0);
    const words = new Uint32Array(context.getImageData(0, 0, bitmap.width, bitmap.height).data.buffer);
    const counts = new Map();
    for (const word of words)
        counts.set(word, (counts.get(word) || 0) + 1);
    const colours = Array.from(counts).sort((a, b) => b[1] - a[1]).slice(0, 256).map(([word]) => word);
    const channels = word => [word & 255, (word >> 8) & 255, (word >> 16) & 255];
    const known = new Map(colours.map((word, place) => [word, place]));
    const nearest = word => {
        const far = other => channels(other).reduce((sum, value, i) => sum + (value - channels(word)[i]) ** 2, 0);
        return colours.reduce((best, other, place) => far(other) < far(colours[best]) ? place : best, 0);
    };
    for (const word of counts.keys())
        if (!known.has(word))
            known.set(word, nearest(word));
    return [bitmap.width, bitmap.height, colours.flatMap(channels), Array.from(words, word => known.get(word))];
}, picture);
const rows = Buffer.alloc(height * (width + 1));
for (let y = 0; y < height; ++y)
    rows.set(places.slice(y * width, (y + 1) * width), y * (width + 1) + 1);
writeFileSync(out, pngFile(width, height, 3, palette, rows));
await browser.stop();
