// Whether the page of a report does what it says, on reports made by hand.
//
//     node page-test.mjs MODULES      the folder with node_modules

import assert from 'node:assert/strict';
import {readFileSync} from 'node:fs';
import {Browser, changesListed, chooseCall, clickPixel, colours, findBrowser, markedPixels, onReport, rowsShown, runTests,
    showStep, SKIPPED} from './browser.mjs';
import {HOSTILE, hostileReport, largeReport, smallReport, stillReport, twoReport} from './made-jobs.mjs';

const ALL = ['line:2', 'line:4', '0', 'line:20', '1', 'line:30', '2', 'line:50', '3', 'line:70', '4'];
const POINTS = [[15, 15], [35, 35], [45, 45], [62, 65], [13, 13]];
// The colours at these points behind each step, from the surfaces that are there.
const BEHIND_STEPS = [
    ['#ffffff', '#ffffff', '#ffffff', '#ffffff', '#ffffff'],
    ['#ff0000', '#ff0000', '#ffffff', '#ffffff', '#ff0000'],
    ['#ff0000', '#ff0000', '#ffffff', '#ffffff', '#ff0000'],
    ['#ff0000', '#00ff00', '#00ff00', '#ffffff', '#ff0000'],
    ['#ff0000', '#00ff00', '#00ff00', '#ffffff', '#ff0000'],
    ['#ff0000', '#00ff00', '#00ff00', '#ffffff', '#ff0000'],
    ['#ff0000', '#00ff00', '#00ff00', '#ffffff', '#ff0000'],
    ['#ff0000', '#00ff00', '#00ff00', '#0000ff', '#ff0000'],
    ['#ff0000', '#00ff00', '#00ff00', '#0000ff', '#ff0000'],
    ['#ff0000', '#00ff00', '#00ff00', '#0000ff', '#808080'],
];

const small = (act, options) => onReport(smallReport, options, act);
const two = (act, options) => onReport(twoReport, options, act);
const count = page => page.textContent('#count');

async function seriousFaults(page, browser) {
    await page.evaluate(readFileSync(browser.axe, 'utf8'));
    const found = await page.evaluate(() => window.axe.run(document, {resultTypes: ['violations']}));
    return found.violations.filter(one => ['serious', 'critical'].includes(one.impact)).map(
        one => one.id + ': ' + one.nodes.slice(0, 3).map(node => node.target.join(' ') + ' ' +
            node.any.map(check => check.message).join(' ')).join('; '));
}

async function lookAtAllPanels(page, browser) {
    const faults = [];
    await page.click('#more-filters');
    await chooseCall(page, '4');
    for (const tab of await page.$$('#tabs [role=tab]')) {
        await tab.click();
        faults.push(...await seriousFaults(page, browser));
    }
    await clickPixel(page, 35, 35);
    await page.keyboard.press('?');
    faults.push(...await seriousFaults(page, browser));
    return [...new Set(faults)];
}

const overflow = page => page.evaluate(() => document.documentElement.scrollWidth - window.innerWidth);

const TESTS = [
    ['a click lists the changes of a pixel in a group', small(async page => {
        assert.deepEqual(await clickPixel(page, 35, 35), ['0 #ffffff #ff0000', '1 #00000000 #00ff00ff', 'line:30 #ff0000 #00ff00']);
        assert.match(await page.textContent('#panel-pixel'), /3 changes; in the end {2}#00ff00/);
        assert.match(await page.textContent('#touches-0-1'), /in line:20/);
        assert.match(await page.textContent('#touches-0-2'), /group_finish of line:20/);
    })],
    ['a click lists the changes of a pixel in a cell', small(async page => {
        assert.deepEqual(await clickPixel(page, 62, 65), ['3 #00000000 #0000ffff', 'line:50 #ffffff #0000ff']);
    })],
    ['a click where nothing was painted lists nothing', small(async page => {
        assert.deepEqual(await clickPixel(page, 99, 5), []);
        assert.match(await page.textContent('#panel-pixel'), /0 changes; in the end {2}#ffffff/);
    })],
    ['a change in the list leads to its call', small(async page => {
        await clickPixel(page, 35, 35);
        await page.focus('#touches-0');
        await page.keyboard.press('ArrowDown');
        await page.keyboard.press('ArrowDown');
        assert.equal(await page.getAttribute('#touches-0', 'aria-activedescendant'), 'touches-0-1');
        assert.equal(await page.getAttribute('#tree', 'aria-activedescendant'), 'tree-4');
        await page.keyboard.press('Enter');
        assert.match(await page.textContent('#panel-call h2'), /^1 object_paint$/);
    })],
    ['a call is outlined with its clips, and its pixels are marked', small(async page => {
        await chooseCall(page, '4');
        assert.equal(await page.getAttribute('#outlines .outline.shape', 'd'), 'M12 12H14V14H12Z');
        assert.equal(await page.locator('#outlines .outline.clip').count(), 2);
        assert.equal(await markedPixels(page), 4);
        await chooseCall(page, 'line:20');
        assert.equal(await markedPixels(page), 400);
        await chooseCall(page, '3');
        // It stands in a resource: the outline is that of the call that paints it.
        assert.equal(await page.getAttribute('#outlines .outline.shape', 'd'), 'M60,60L90,60L90,70L60,70Z');
        await page.waitForFunction(() => document.getElementById('panel-call').textContent.includes(
            'in the units of its resource; the page has an outline where the resource is painted'));
        assert.equal(await markedPixels(page), 30);
        await page.click('#show-changed');
        await page.waitForFunction(() => !document.getElementById('show-changed').matches('[aria-pressed=true]'));
        await chooseCall(page, '0');
        assert.equal(await markedPixels(page), 0);
    })],
    ['the slider draws each step, in any order', small(async page => {
        for (const step of [0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 3, 9, 1, 8, 0, 5, 7, 2]) {
            await showStep(page, step);
            assert.deepEqual(await colours(page, POINTS), BEHIND_STEPS[step], 'step ' + step);
        }
        await page.click('#whole');
        assert.deepEqual(await colours(page, POINTS), BEHIND_STEPS[9]);
    })],
    ['arrow keys on the slider go step by step, and the tree follows', small(async page => {
        await page.focus('#step');
        await page.keyboard.press('Home');
        await page.keyboard.press('ArrowRight');
        await page.waitForSelector('#viewport[data-step="1"]');
        assert.equal(await page.getAttribute('#tree', 'aria-activedescendant'), 'tree-2');
        assert.match(await page.getAttribute('#step', 'aria-valuetext'), /step 2 of 10: 0 object_paint/);
        await page.waitForSelector('#panel-call h2');
        assert.match(await page.textContent('#panel-call h2'), /^0 object_paint$/);
    })],
    ['keys draw the page up to a call', small(async page => {
        await chooseCall(page, '1');
        await page.keyboard.press('s');
        await page.waitForSelector('#viewport[data-step="3"]');
        await page.keyboard.press(',');
        await page.waitForSelector('#viewport[data-step="2"]');
        assert.deepEqual(await colours(page, [[45, 45]]), ['#ffffff']);
        await page.keyboard.press('.');
        await page.waitForSelector('#viewport[data-step="3"]');
        assert.deepEqual(await colours(page, [[45, 45]]), ['#00ff00']);
        await page.keyboard.press('w');
        assert.equal(await page.getAttribute('#whole', 'aria-pressed'), 'true');
    })],
    ['search finds texts, and shows what stands above', small(async page => {
        await page.keyboard.press('/');
        await page.keyboard.type('nothing SEE');
        assert.deepEqual(await rowsShown(page), ['line:2*', 'line:4*', '2']);
        assert.equal(await count(page), '1 of 11 calls');
        await page.keyboard.press('Enter');
        assert.match(await page.textContent('#panel-call h2'), /^2 object_paint$/);
        await page.fill('#search', '');
        assert.deepEqual(await rowsShown(page), ALL);
    })],
    ['filters', small(async page => {
        const found = async () => (await rowsShown(page)).filter(row => !row.endsWith('*'));
        await page.click('#more-filters');
        await page.selectOption('#filter-kind', 'object_paint');
        assert.deepEqual(await found(), ['0', '1', '2', '3', '4']);
        await page.selectOption('#filter-operator', 'darken');
        assert.deepEqual(await found(), ['2']);
        await page.click('#no-filters');
        await page.fill('#filter-colour', '#0f0');
        assert.deepEqual(await found(), ['1']);
        await page.fill('#filter-colour', '00ff00');
        assert.deepEqual(await found(), ['1']);
        await page.fill('#filter-colour', 'gray');
        assert.deepEqual(await found(), ['4']);
        await page.fill('#filter-colour', '');
        await page.fill('#filter-text', 'NOTHING');
        assert.deepEqual(await found(), ['2']);
        await page.fill('#filter-text', '');
        await page.check('#filter-warnings');
        assert.deepEqual(await found(), ['2']);
        await page.uncheck('#filter-warnings');
        await page.check('#filter-nothing');
        assert.deepEqual(await found(), ['2']);
        await page.fill('#search', 'line:');
        assert.equal(await count(page), '0 of 11 calls');
    })],
    ['the tree by keys', small(async page => {
        await page.keyboard.press('t');
        await page.keyboard.press('Home');
        await page.keyboard.press('ArrowRight');
        assert.equal(await page.getAttribute('#tree', 'aria-activedescendant'), 'tree-1');
        for (let i = 0; i < 2; ++i)
            await page.keyboard.press('ArrowDown');
        await page.keyboard.press('ArrowLeft');
        assert.deepEqual(await rowsShown(page), ALL.filter(row => row !== '1' && row !== 'line:30'));
        assert.equal(await page.getAttribute('#tree-3', 'aria-expanded'), 'false');
        await page.keyboard.press('ArrowRight');
        assert.equal(await page.getAttribute('#tree-3', 'aria-expanded'), 'true');
        await page.keyboard.press('ArrowRight');
        assert.equal(await page.getAttribute('#tree', 'aria-activedescendant'), 'tree-4');
        await page.keyboard.press('ArrowLeft');
        assert.equal(await page.getAttribute('#tree', 'aria-activedescendant'), 'tree-3');
        await page.keyboard.press('End');
        assert.equal(await page.getAttribute('#tree', 'aria-activedescendant'), 'tree-10');
        await page.keyboard.press('[');
        assert.deepEqual(await rowsShown(page), ['line:2', 'line:4']);
        const row = page.locator('#tree-1');
        assert.deepEqual([await row.getAttribute('aria-level'), await row.getAttribute('aria-setsize'),
            await row.getAttribute('aria-posinset')], ['2', '1', '1']);
    })],
    ['the page by keys', small(async page => {
        await page.keyboard.press('g');
        for (const key of ['ArrowLeft', 'ArrowUp', 'Shift+ArrowLeft', 'Shift+ArrowUp', 'Enter'])
            await page.keyboard.press(key);
        await page.waitForSelector('#panel-pixel[data-pixel="39,29"]');
        assert.deepEqual(await changesListed(page, 0), ['0 #ffffff #ff0000']);
        const before = await page.textContent('#zoom');
        await page.keyboard.press('+');
        assert.notEqual(await page.textContent('#zoom'), before);
        await page.keyboard.press('0');
        assert.equal(await page.textContent('#zoom'), before);
    })],
    ['a zoomed page is clicked at the right pixel', small(async page => {
        await page.click('#larger');
        await page.click('#larger');
        assert.deepEqual(await clickPixel(page, 50, 40), []);
        assert.deepEqual(await clickPixel(page, 49, 40), ['1 #00000000 #00ff00ff', 'line:30 #ffffff #00ff00']);
    })],
    ['the record, as a table and as the log has it', small(async page => {
        await chooseCall(page, '0');
        assert.equal(await page.textContent('#panel-call .record-table tbody tr:nth-child(1)'), 'ORV_object_paintid0');
        assert.equal(await page.locator('#panel-call .record-table tbody tr').count(), 7);
        await page.click('#panel-call [data-form=log]');
        assert.match(await page.textContent('#panel-call pre.record'), /^ {2}<ORV_object_paint id="0">\n {4}<op>\n/);
        await chooseCall(page, '2');
        assert.match(await page.textContent('#panel-call .facts'), /changesnothing: transparent, because of line:20 group_start.*a warning of the logger/);
        await chooseCall(page, '0');
        assert.match(await page.textContent('#panel-call .facts'), /changes900 pixels in 10,10,40,40/);
    })],
    ['help, and light and dark', small(async page => {
        await page.keyboard.press('?');
        assert.match(await page.textContent('#keys-list'), /search in the calls/);
        await page.keyboard.press('Escape');
        const ground = () => page.evaluate(() => getComputedStyle(document.body).backgroundColor);
        const before = await ground();
        await page.click('#theme');
        assert.notEqual(await ground(), before);
    }, {colorScheme: 'light'})],
    ['what is said on top', small(async page => {
        assert.equal(await page.textContent('#findings'), 'The log is whole, without damage or warnings.');
        assert.match(await page.textContent('#made-by'), /^Made by orvlog 1\.0\.0\. made\.xml, plain, 1\u202f234 bytes/);
        await page.click('#tab-figures');
        assert.match(await page.textContent('#panel-figures'), /SHA-256(ab){32}/);
    })],
    ['a damaged log without steps tells it on top', onReport(stillReport, {}, async page => {
        const findings = await page.locator('#findings li').allTextContents();
        assert.deepEqual(findings.filter(text => !/^(a tag|line|odd|strange)/.test(text)), ['The log ends too early.',
            'It ends in a call: ORV_object_paint 5, line 99 5 object_paint', '1 place of damageWhichline 7, byte 300: a tag is open',
            'Page 2: not finished', '3 warnings of the loggerWhichodd (2 times)strange']);
        assert.ok(await page.isDisabled('#step'));
        await clickPixel(page, 35, 35);
        assert.match(await page.textContent('#panel-pixel'), /no steps/);
        await page.click('#findings button.link');
        assert.match(await page.textContent('#panel-call h2'), /^5 object_paint$/);
        await page.waitForFunction(() => document.getElementById('page-choice').value === '1');
        assert.match(await page.textContent('#no-page'), /no picture/);
        await page.click('#more-filters');
        await page.check('#filter-page');
        assert.deepEqual(await rowsShown(page), ['line:2*', 'line:90', '5']);
        await page.keyboard.press('g');
        await page.keyboard.press('PageUp');
        await page.waitForFunction(() => document.getElementById('page-choice').value === '0');
        // Without effects it isn't known on which page the call in the resource is to be seen.
        assert.deepEqual(await rowsShown(page), ['line:2*', ...ALL.slice(1).filter(row => row !== '3')]);
    })],
    ['two logs: from difference to difference', two(async page => {
        assert.match(await page.textContent('#findings'), /2 calls and 1 page differ\./);
        await page.keyboard.press('n');
        await page.waitForSelector('#panel-call .records tr.differs');
        assert.match(await page.textContent('#panel-call h2'), /^0 object_paint$/);
        assert.equal(await page.textContent('#panel-call .differences tbody'), 'clip/GGO_Vector[2]gvf_X27');
        assert.deepEqual(await page.locator('#panel-call tr.differs').allTextContents(), ['GGO_Vectorgvf_X2 differs',
            'GGO_Vectorgvf_X7 differs']);
        await page.keyboard.press('n');
        assert.match(await page.textContent('#panel-call'), /^4 object_paint.*missing in B/);
        await page.keyboard.press('p');
        assert.match(await page.textContent('#panel-call h2'), /^0 object_paint$/);
    })],
    ['two logs: pages blend, differences are marked, clicks list both', two(async page => {
        assert.deepEqual(await colours(page, [[15, 15]]), ['#00ffff']);
        assert.equal(await markedPixels(page), 796);
        await page.keyboard.press('x');
        assert.deepEqual(await colours(page, [[15, 15]]), ['#ff0000']);
        await page.evaluate(() => {
            document.getElementById('blend').value = 50;
            document.getElementById('blend').dispatchEvent(new Event('input'));
        });
        const [red, green] = (await colours(page, [[15, 15]]))[0].match(/[0-9a-f]{2}/g).map(two => parseInt(two, 16));
        assert.ok(Math.abs(red - 128) < 3 && Math.abs(green - 128) < 3);
        assert.deepEqual(await clickPixel(page, 15, 15), ['0 #ffffff #ff0000']);
        assert.deepEqual(await changesListed(page, 1), ['0 #ffffff #00ffff']);
        await page.keyboard.press('d');
        await page.waitForFunction(() => document.getElementById('marks').getContext('2d').getImageData(15, 15, 1, 1).data[3] === 0);
    })],
    ['two logs: only what differs', two(async page => {
        await page.click('#more-filters');
        await page.check('#filter-differs');
        assert.deepEqual(await rowsShown(page), ['line:2*', 'line:4*', '0', '4']);
        assert.match(await page.textContent('#tree-2'), /changed$/);
        await page.click('#tab-difference');
        assert.match(await page.textContent('#panel-difference'), /page 1796 pixels in 10,10,40,400 object_paint/);
    })],
    ['what a hostile log says is text', onReport(hostileReport, {}, async page => {
        await chooseCall(page, '4');
        await clickPixel(page, 35, 35);
        for (const name of ['call', 'figures', 'objects'])
            await page.click('#tab-' + name);
        assert.match(await page.textContent('#panel-objects'), /5 more uses/);
        assert.equal(await page.evaluate(() => window.hurt), undefined);
        assert.equal(await page.locator('main img:not([alt])').count(), 0);
        assert.equal(await page.locator('main script, #findings script, #paper script, [onerror]').count(), 0);
        const shown = HOSTILE.replace('\0', '\u2400').replace('\u202e', '\u27e8U+202E\u27e9').replace('\u2066', '\u27e8U+2066\u27e9');
        assert.ok((await page.textContent('#panel-figures')).includes(shown));
        assert.ok((await page.textContent('#findings')).includes(shown));
        assert.ok((await page.textContent('#panel-call')).includes(shown));
        const bidi = /[\0\u202a-\u202e\u2066-\u2069]/;
        assert.ok(!bidi.test(await page.evaluate(() => document.querySelector('main').innerText +
            document.getElementById('findings').innerText)));
    })],
    ['a report without one of its blocks says so', async browser => {
        const whole = smallReport();
        const list = /"list":"(b\d+)"/.exec(whole)[1];
        const content = whole.replace(`id="${list}"`, 'id="lost"');
        const context = await browser.chromium.newContext();
        const page = await context.newPage();
        await page.goto('file://' + browser.file('lost.html', content));
        await page.waitForSelector('.failure[role=alert]');
        assert.match(await page.textContent('.failure[role=alert]'), /lacks its block b\d+/);
    }],
    ['60,000 calls: only the rows in sight are made', onReport(() => largeReport(60000), {}, async page => {
        assert.ok(await page.locator('#tree .row').count() < 100);
        await page.keyboard.press('t');
        await page.keyboard.press('End');
        assert.deepEqual((await rowsShown(page)).at(-1), '59999');
        await page.fill('#search', 'text 4200');
        assert.equal(await count(page), '7 of 60\u202f002 calls');
        await page.fill('#search', '');
        await page.click('#tree .row >> nth=20');
        for (const step of [60000, 31234, 31235, 12, 44000])
            await showStep(page, step);
        assert.deepEqual(await clickPixel(page, 5, 5).then(list => list.length), 79);
    })],
    ['small screens show one part at a time', small(async page => {
        assert.ok(await overflow(page) <= 0);
        assert.ok(await page.isVisible('#viewport') && !await page.isVisible('#tree'));
        await page.click('#rooms [data-room=calls]');
        assert.ok(await page.isVisible('#tree') && !await page.isVisible('#viewport'));
        await page.click('#tree-4');
        await page.click('#rooms [data-room=details]');
        assert.match(await page.textContent('#panel-call h2'), /^1 object_paint$/);
        await page.waitForSelector('.shape-picture svg[viewBox="29.4 29.4 21.2 21.2"]');
    }, {viewport: {width: 360, height: 640}})],
    ['text of twice the size fits', two(async page => {
        await page.evaluate(() => {
            document.documentElement.style.fontSize = '200%';
        });
        await page.waitForSelector('html[data-layout=one]');
        assert.ok(await overflow(page) <= 0);
        for (const [room, ids] of [['page', ['viewport', 'step', 'blend']], ['calls', ['search', 'tree']],
            ['details', ['panel-difference']]]) {
            await page.click(`#rooms [data-room=${room}]`);
            for (const id of ids) {
                const [box, pane] = await Promise.all(['#' + id, '#' + room].map(name => page.locator(name).boundingBox()));
                assert.ok(box.height > 20 && box.y + box.height <= pane.y + pane.height + 1, id);
            }
        }
    })],
    ['paper gets findings and pages', small(async page => {
        await page.waitForSelector('#paper img', {state: 'attached'});
        await page.emulateMedia({media: 'print'});
        assert.ok(await page.isVisible('#paper') && !await page.isVisible('main'));
        assert.match(await page.textContent('#paper'), /Findings.*Page 1, 100 by 80 pixels/s);
        assert.equal(await page.locator('#paper img').evaluate(image => image.naturalWidth), 100);
        const pdf = (await page.pdf({preferCSSPageSize: true})).toString('latin1');
        assert.equal(pdf.match(/\/Type\s*\/Page\b/g).length, 2);
    })],
    ['no serious fault for who can\u2019t see or use a mouse, light', small(async (page, browser) => {
        assert.deepEqual(await lookAtAllPanels(page, browser), []);
    }, {colorScheme: 'light', bypassCSP: true})],
    ['no serious fault for who can\u2019t see or use a mouse, dark', small(async (page, browser) => {
        assert.deepEqual(await lookAtAllPanels(page, browser), []);
    }, {colorScheme: 'dark', bypassCSP: true})],
    ['no serious fault with two logs, light and dark', two(async (page, browser) => {
        await page.keyboard.press('n');
        assert.deepEqual(await lookAtAllPanels(page, browser), []);
        await page.keyboard.press('Escape');
        await page.click('#theme');
        assert.deepEqual(await seriousFaults(page, browser), []);
    }, {colorScheme: 'light', bypassCSP: true})],
];

const found = findBrowser(process.argv[2]);
if (typeof found === 'string') {
    console.log(`skipped: ${found} missing; scripts/setup installs it`);
    process.exit(SKIPPED);
}
const browser = await Browser.start(found);
const wanted = process.argv[3];
const ok = await runTests(browser, TESTS.filter(([name]) => !wanted || name.includes(wanted)));
await browser.stop();
process.exit(ok ? 0 : 1);
