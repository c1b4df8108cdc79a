// In what two logs differ: pages, and the calls in order.

const DIFFERENCES_AT_ONCE = 200;

function differencePanel(report, panel) {
    const compare = report.index.compare;
    const counts = compare.counts;
    replaceContent(panel, make('h2', {}, 'Differences'),
        compare.note ? make('p', {class: 'note warning'}, compare.note) : null,
        make('p', {}, [counted(counts.same, 'call') + ' the same', counted(counts.changed, 'changed', 'changed'),
            grouped(counts.missing) + ' missing in B', grouped(counts.added) + ' added in B'].join(', ')),
        rootDifferences(compare.roots), pageDifferences(report, compare.pages), callDifferences(report));
}

function rootDifferences(roots) {
    if (!roots || roots.length === 0)
        return null;
    return make('table', {class: 'figures'}, make('caption', {}, 'Root of the logs'),
        make('thead', {}, make('tr', {}, ...['attribute', 'A', 'B'].map(name => make('th', {scope: 'col'}, name)))),
        make('tbody', {}, roots.map(([, attribute, a, b]) => make('tr', {}, make('th', {scope: 'row'}, attribute),
            make('td', {}, a === null ? '-' : shortened(a, 300)), make('td', {}, b === null ? '-' : shortened(b, 300))))));
}

function pageDifferences(report, pages) {
    if (pages.length === 0)
        return null;
    const row = (page, index) => {
        const name = page.a === page.b ? 'page ' + page.a : 'page ' + (page.a || '-') + ' / ' + (page.b || '-');
        return make('tr', {}, make('th', {scope: 'row'}, make('button', {type: 'button', class: 'link',
            onclick: () => report.turnTo(index)}, name)),
        make('td', {}, page.same ? 'the same' : pageText(page)),
        make('td', {}, causeOf(report, page)));
    };
    return make('div', {'class': 'wide', 'tabindex': 0, 'role': 'region', 'aria-label': 'Pages'},
        make('table', {class: 'figures'}, make('caption', {}, 'Pages'),
            make('thead', {}, make('tr', {}, ...['page', 'differs', 'because of'].map(
                name => make('th', {scope: 'col'}, name)))),
            make('tbody', {}, pages.map(row))));
}

function pageText(page) {
    const parts = [counted(page.pixels, 'pixel') + (page.area ? ' in ' + boxText(page.area) : '')];
    if (page.in_layer)
        parts.push('first in a layer');
    if (page.at_end)
        parts.push('shown by the page\u2019s end only');
    return parts.join(', ');
}

function causeOf(report, page) {
    for (const [which, cause, behind] of [[1, page.cause_b, page.call_b], [0, page.cause_a, page.call_a]])
        for (const address of [cause, behind]) {
            const call = address ? report.logs[which].findAddress(address) : -1;
            const item = call >= 0 ? report.items.itemOf[which][call] : -1;
            if (item >= 0)
                return report.callLink(item);
        }
    return '-';
}

function callDifferences(report) {
    const items = report.items;
    const list = make('ol', {class: 'difference-list'});
    const more = make('button', {type: 'button', class: 'more'});
    let shown = 0;
    const add = () => {
        const next = items.differences.slice(shown, shown + DIFFERENCES_AT_ONCE).filter(item => items.isListed(item));
        shown += DIFFERENCES_AT_ONCE;
        list.append(...next.map(item => make('li', {}, report.callLink(item), ' ' + ITEM_KINDS[items.kind[item]],
            make('div', {class: 'note'}, (items.detail[item] || []).slice(0, 3).map(
                ([path, attribute]) => shortened((path ? path + ' ' : '') + attribute, 120)).join('; ')))));
        more.hidden = shown >= items.differences.length;
        more.textContent = 'More: ' + grouped(items.differences.length - shown);
    };
    more.addEventListener('click', add);
    add();
    return make('section', {}, make('h3', {}, 'Calls'), items.differences.length === 0 ?
        make('p', {}, 'No call differs.') : list, more);
}
