// How long a report takes to show any step of a page: as the first one that is asked for (the least of five
// times), and among others.
//
//     node step-times.mjs MODULES REPORT.html [STEPS]

import {Browser, findBrowser, SKIPPED} from './browser.mjs';

const [modules, report, steps] = process.argv.slice(2);
const found = findBrowser(modules);
if (typeof found === 'string') {
    console.log(`skipped: ${found} missing; scripts/setup installs it`);
    process.exit(SKIPPED);
}
const browser = await Browser.start(found);
const page = await browser.open(report);
const told = await page.evaluate(async count => {
    const lines = [];
    for (const one of JSON.parse(document.getElementById('index').textContent).logs[0].pages) {
        if (!one.steps)
            continue;
        const steps = await new PageSteps(one.steps).load();
        const context = new OffscreenCanvas(one.width, one.height).getContext('2d');
        const times = {first: [], among: []};
        const timeOf = async (player, step) => {
            const begun = performance.now();
            await player.seek(step);
            player.draw(context, () => null);
            return performance.now() - begun;
        };
        const among = new StepPlayer(steps);
        for (let i = 0; i < count; ++i) {
            const step = Math.floor(steps.count * ((i * 0.6180339887) % 1));
            let least = Infinity;
            for (let again = 0; again < 5; ++again) {
                blockCache.clear();
                least = Math.min(least, await timeOf(new StepPlayer(steps), step));
            }
            times.first.push(least);
            times.among.push(await timeOf(among, step));
        }
        for (const kind of ['first', 'among']) {
            const sorted = times[kind].sort((a, b) => a - b);
            const at = part => sorted[Math.min(sorted.length - 1, Math.floor(sorted.length * part))].toFixed(1);
            lines.push(`page ${one.page}, ${steps.count} steps, ${kind}: half within ${at(0.5)} ms, ` +
                `95 of 100 within ${at(0.95)} ms, all within ${at(1)} ms`);
        }
    }
    return lines;
}, Number(steps ?? 40));
console.log(told.join('\n'));
await browser.stop();
