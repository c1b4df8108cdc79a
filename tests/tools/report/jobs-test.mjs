// Reports that the command makes of real jobs: what a click lists is what `orvlog at` tells, the last step is the page,
// and planted faults are found.
//
//     node jobs-test.mjs MODULES ORVLOG RECORD SAMPLE [--kinds KIND,...|all] [--pixels N]

import assert from 'node:assert/strict';
import {execFileSync, spawnSync} from 'node:child_process';
import {join} from 'node:path';
import {Browser, changesListed, clickPixel, findBrowser, markedPixels, runTests, showStep, SKIPPED} from './browser.mjs';

const PLANT = new URL('../../../scripts/plant-fault', import.meta.url).pathname;
// One of each sort: what is painted, how, where, what is read, and calls that are missing or in another order.
const SOME_KINDS = ['operator', 'colour', 'clip-point', 'image-row', 'drop', 'swap'];

const [modules, orvlog, record, sample, ...more] = process.argv.slice(2);
const option = (name, otherwise) => more.includes(name) ? more[more.indexOf(name) + 1] : otherwise;
const found = findBrowser(modules);
if (typeof found === 'string') {
    console.log(`skipped: ${found} missing; scripts/setup installs it`);
    process.exit(SKIPPED);
}

const browser = await Browser.start(found);
const run = (...words) => execFileSync(orvlog, words, {encoding: 'utf8', maxBuffer: 1 << 28, stdio: ['ignore', 'pipe', 'pipe']});
const place = name => join(browser.folder, name);
const log = place('good.xml');
execFileSync(record, [sample, '-o', log], {stdio: 'ignore'});
run('report', log, '-o', place('good.html'));

/** The same numbers in every run. */
function numbersFrom(seed) {
    return limit => {
        seed = (Math.imul(seed, 1103515245) + 12345) >>> 0;
        return Math.floor(seed / 65536) % limit;
    };
}

async function showPage(page, index) {
    await page.selectOption('#page-choice', String(index));
    await page.waitForFunction(() => /^whole page/.test(document.getElementById('step-text').textContent));
}

async function listsAreThoseOfAt() {
    const page = await browser.open(place('good.html'));
    const random = numbersFrom(7);
    const count = await page.locator('#page-choice option').count();
    for (let i = 0; i < Number(option('--pixels', 12)); ++i) {
        const index = i % count;
        await showPage(page, index);
        const [width, height] = await page.$eval('#picture', canvas => [canvas.width, canvas.height]);
        const [x, y] = [random(width), random(height)];
        const told = JSON.parse(run('at', log, '--page', String(index + 1), `${x},${y}`, '--json'));
        const changes = told.calls.filter(one => one.changed).map(
            one => [one.call, one.before ?? '-', one.after ?? '-'].join(' '));
        assert.deepEqual(await clickPixel(page, x, y), changes, `pixel ${x},${y} of page ${index + 1}`);
    }
    assert.deepEqual(page.troubles, []);
}

const hashOfPicture = page => page.evaluate(async () => {
    const canvas = document.getElementById('picture');
    const data = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data;
    let hash = 0;
    for (const value of data)
        hash = (Math.imul(hash, 31) + value) | 0;
    return hash;
});

async function lastStepIsThePage() {
    const page = await browser.open(place('good.html'));
    for (let index = 0; index < await page.locator('#page-choice option').count(); ++index) {
        await showPage(page, index);
        const whole = await hashOfPicture(page);
        const last = Number(await page.getAttribute('#step', 'max'));
        await showStep(page, 0);
        assert.notEqual(await hashOfPicture(page), whole);
        await showStep(page, last);
        assert.equal(await hashOfPicture(page), whole, `page ${index + 1}`);
    }
    assert.deepEqual(page.troubles, []);
}

async function callsChangeAsManyPixelsAsIsTold() {
    const page = await browser.open(place('good.html'));
    const random = numbersFrom(3);
    await page.keyboard.press('t');
    for (let i = 0; i < 8; ++i) {
        await page.fill('#search', String(random(200)));
        await page.press('#search', 'Enter');
        const item = await page.getAttribute('#tree [aria-selected=true]', 'data-item');
        await page.waitForSelector(`#viewport[data-marked="${item}"]`);
        const told = /changes([\d\u202f]+) pixels?/.exec(await page.textContent('#panel-call .facts'));
        const marked = await markedPixels(page);
        // A pixel that several steps of a call change is marked once.
        assert.ok(told === null ? marked === 0 : marked > 0 && marked <= Number(told[1].replaceAll('\u202f', '')),
            `call ${item}: ${marked} marked, ${told && told[1]} told`);
    }
    assert.deepEqual(page.troubles, []);
}

/** The first pixel that is marked on the page as differing. */
const differingPixel = page => page.evaluate(() => {
    const canvas = document.getElementById('marks');
    const data = new Uint32Array(canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data.buffer);
    const at = data.findIndex(word => word !== 0);
    return at < 0 ? null : [at % canvas.width, Math.floor(at / canvas.width)];
});

function faultIsFound(kind) {
    return async () => {
        const bad = place(`bad-${kind}.xml`);
        const [inGood, inBad] = execFileSync(PLANT, [log, kind, bad], {encoding: 'utf8'}).trim().split('\t');
        const told = [inGood, inBad].filter(address => address !== '-');
        const made = spawnSync(orvlog, ['report', log, bad, '-o', place(`${kind}.html`)], {encoding: 'utf8'});
        assert.equal(made.status, 0, made.stderr);
        const page = await browser.open(place(`${kind}.html`));
        await page.waitForSelector('#viewport[data-marked]');
        const pixel = await differingPixel(page);
        if (pixel) {
            await clickPixel(page, ...pixel);
            const lists = await Promise.all([0, 1].map(which => page.locator(`#touches-${which} [role=option]`).allTextContents()));
            const named = [...await changesListed(page, 0), ...await changesListed(page, 1)].some(
                change => told.includes(change.split(' ')[0])) || lists.flat().some(
                text => told.some(address => text.includes(' of ' + address) || text.includes('in ' + address)));
            assert.ok(named, `a click at ${pixel} names ${told}: ${lists.flat()}`);
        }
        await page.keyboard.press('n');
        await page.waitForSelector('#panel-call .differences');
        const heading = await page.textContent('#panel-call h2 .address');
        assert.ok(told.includes(heading), `n leads to ${told}: ${heading}`);
        assert.deepEqual(page.troubles, []);
    };
}

const asked = option('--kinds', '');
const kinds = asked === 'all' ? execFileSync(PLANT, ['--kinds'], {encoding: 'utf8'}).trim().split('\n').filter(
    kind => kind !== 'renumber') : asked ? asked.split(',') : SOME_KINDS;
const ok = await runTests(browser, [
    ['what a click lists is what orvlog at tells', listsAreThoseOfAt],
    ['the last step is the page', lastStepIsThePage],
    ['calls mark as many pixels as they are told to change', callsChangeAsManyPixelsAsIsTold],
    ...kinds.map(kind => [`the fault ${kind} is found`, faultIsFound(kind)]),
]);
await browser.stop();
process.exit(ok ? 0 : 1);
