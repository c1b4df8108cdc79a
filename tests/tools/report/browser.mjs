// A browser without a window, in which reports are opened, and the list of tests that do.

import assert from 'node:assert/strict';
import {existsSync, mkdtempSync, rmSync, writeFileSync} from 'node:fs';
import {createRequire} from 'node:module';
import {tmpdir} from 'node:os';
import {join, resolve} from 'node:path';

export const SKIPPED = 77;

/** What is needed beside node, or, as a text, what of it is missing. */
export function findBrowser(modules) {
    const program = ['/usr/bin/chromium', '/usr/bin/chromium-browser'].find(existsSync);
    if (!program)
        return 'chromium';
    const require = createRequire(resolve(modules, 'modules.js'));
    try {
        return {program, chromium: require('playwright-core').chromium, axe: require.resolve('axe-core/axe.min.js')};
    } catch {
        return 'playwright-core and axe-core in ' + modules;
    }
}

export class Browser {
    static async start(found) {
        const browser = new Browser();
        browser.axe = found.axe;
        browser.folder = mkdtempSync(join(tmpdir(), 'report-test-'));
        const sandbox = process.getuid && process.getuid() === 0 ? ['--no-sandbox'] : [];
        browser.chromium = await found.chromium.launch({executablePath: found.program, args: sandbox});
        return browser;
    }

    /** The path of a file with this content. */
    file(name, content) {
        const path = join(this.folder, name);
        writeFileSync(path, content);
        return path;
    }

    /** Opens a report; `page.troubles` gathers what goes wrong: errors, and requests for anything but the file. */
    async open(path, options = {}) {
        const context = await this.chromium.newContext({viewport: {width: 1400, height: 900}, ...options});
        const page = await context.newPage();
        page.troubles = [];
        page.on('console', message => message.type() === 'error' && page.troubles.push('console: ' + message.text()));
        page.on('pageerror', error => page.troubles.push('error: ' + error.message));
        page.on('request', request => {
            if (request.url() !== 'file://' + path && !/^(data|blob):/.test(request.url()))
                page.troubles.push('request: ' + request.url());
        });
        await page.goto('file://' + path);
        await page.waitForSelector('body[data-ready]', {timeout: 60000});
        return page;
    }

    async stop() {
        await this.chromium.close();
        rmSync(this.folder, {recursive: true});
    }
}

/** Clicks on a pixel of the page, and gives the list of changes: address, colour before and after. */
export async function clickPixel(page, x, y) {
    // A mouse reaches whole pixels of the screen only.
    while (await page.evaluate(() => document.getElementById('sheet').offsetWidth < 2 * document.getElementById('picture').width))
        await page.click('#larger');
    const at = await page.evaluate(([column, row]) => {
        const view = document.getElementById('viewport');
        const sheet = document.getElementById('sheet');
        const zoom = sheet.offsetWidth / document.getElementById('picture').width;
        view.scrollLeft = column * zoom - view.clientWidth / 2;
        view.scrollTop = row * zoom - view.clientHeight / 2;
        delete document.getElementById('panel-pixel').dataset.pixel;
        const frame = sheet.getBoundingClientRect();
        return [frame.left + (column + 0.5) * zoom, frame.top + (row + 0.5) * zoom];
    }, [x, y]);
    await page.mouse.click(...at);
    await page.waitForSelector(`#panel-pixel[data-pixel="${x},${y}"]`, {timeout: 10000});
    return changesListed(page, 0);
}

/** What the panel lists of the first log, 0, or of the second. */
export function changesListed(page, which) {
    return page.$$eval(`#touches-${which} [role=option]`, options => options.map(
        option => [option.dataset.call, option.dataset.before, option.dataset.after].join(' ')));
}

/** The colours of the page at these pixels, "#rrggbb". */
export function colours(page, pixels, canvas = 'picture') {
    return page.evaluate(([where, name]) => where.map(([x, y]) => {
        const data = document.getElementById(name).getContext('2d').getImageData(x, y, 1, 1).data;
        return '#' + Array.from(data.slice(0, 3), value => value.toString(16).padStart(2, '0')).join('');
    }), [pixels, canvas]);
}

/** How many pixels of the page are marked. */
export function markedPixels(page) {
    return page.evaluate(() => {
        const canvas = document.getElementById('marks');
        const data = new Uint32Array(canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data.buffer);
        return data.reduce((sum, word) => sum + (word !== 0 ? 1 : 0), 0);
    });
}

/** The addresses in the tree, with a star behind those that only stand above others that were searched for. */
export function rowsShown(page) {
    return page.$$eval('#tree .row', rows => rows.map(row => row.querySelector('.c-address').lastChild.textContent +
        (row.classList.contains('context') ? '*' : '')));
}

/** Chooses a call by its address. */
export async function chooseCall(page, address) {
    const row = page.locator('#tree .row').filter({has: page.locator('.c-address', {hasText: new RegExp(`^.?${address}$`)})});
    await row.locator('.c-kind').click();
    const item = await row.getAttribute('data-item');
    await page.waitForSelector(`#viewport[data-marked="${item}"]`);
    await page.waitForSelector('#panel-call .records');
}

/** Moves the slider to a step, and waits until it is drawn. */
export async function showStep(page, step) {
    await page.evaluate(value => {
        const slider = document.getElementById('step');
        slider.value = value;
        slider.dispatchEvent(new Event('input'));
    }, step);
    await page.waitForSelector(`#viewport[data-step="${step}"]`);
}

/** Runs tests one after the other, names those that fail, and ends with the count. */
export async function runTests(browser, tests) {
    let failed = 0;
    for (const [name, test] of tests) {
        try {
            await test(browser);
        } catch (error) {
            ++failed;
            console.log(`${name}: ${error.message}\n${(error.stack ?? '').split('\n').filter(line => line.includes('.mjs')).slice(0, 2).join('\n')}`);
        }
        await Promise.all(browser.chromium.contexts().map(context => context.close()));
    }
    console.log(`${tests.length - failed} passed, ${failed} failed`);
    return failed === 0;
}

/** A test of a report: opens it, and holds at the end that nothing went wrong on the way. */
export function onReport(content, options, act) {
    return async browser => {
        const page = await browser.open(browser.file('report.html', content()), options);
        await act(page, browser);
        assert.deepEqual(page.troubles, []);
    };
}
