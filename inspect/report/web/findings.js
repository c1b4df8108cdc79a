// What is wrong with a log, on top of everything.

const FINDINGS_AT_ONCE = 20;

/** @return {!Array<{text: string, grave: boolean, more: ?Array<string>, call: ?number}>} the worst first */
function findingsOf(log) {
    const found = [];
    const add = (grave, text, more, call) => found.push({grave, text, more: more || null, call: call === undefined ? null : call});
    if (log.cut)
        add(true, 'The log ends too early.');
    if (log.in_flight)
        add(true, 'It ends in a call: ' + log.in_flight.text, null, log.in_flight.call);
    if (log.garbled)
        add(true, 'The coded bytes are damaged.');
    if (log.damage.count > 0)
        add(true, counted(log.damage.count, 'place') + ' of damage', log.damage.first.map(
            one => 'line ' + grouped(one.line) + ', byte ' + grouped(one.byte) + ': ' + one.text));
    for (const note of log.notes)
        add(false, note);
    for (const page of log.pages) {
        if (page.note)
            add(false, 'Page ' + page.page + ': ' + page.note);
        if (page.steps && page.steps.note)
            add(false, 'Page ' + page.page + ': ' + page.steps.note);
    }
    if (log.warnings.count > 0)
        add(false, counted(log.warnings.count, 'warning') + ' of the logger', log.warnings.texts.map(
            ([text, count]) => text + (count > 1 ? ' (' + grouped(count) + ' times)' : '')));
    if (log.calls.count < log.calls.of)
        add(false, grouped(log.calls.count) + ' of ' + counted(log.calls.of, 'call') + ' are in this report.');
    return found;
}

function showFindings(report) {
    const place = byId('findings');
    const sections = report.index.logs.map((log, which) => {
        const found = findingsOf(log);
        const name = report.index.logs.length > 1 ? 'AB'[which] + ': ' : '';
        if (found.length === 0)
            return make('p', {class: 'fine'}, name + 'The log is whole, without damage or warnings.');
        return make('ul', {'class': 'finding-list', 'aria-label': 'Findings' + (name ? ' of log ' + 'AB'[which] : '')},
            found.slice(0, FINDINGS_AT_ONCE).map(finding => findingItem(report, which, name, finding)),
            found.length > FINDINGS_AT_ONCE ?
                make('li', {}, 'and ' + counted(found.length - FINDINGS_AT_ONCE, 'other', 'others')) : null);
    });
    if (report.index.compare)
        sections.push(compareLine(report));
    replaceContent(place, sections);
}

function findingItem(report, which, name, finding) {
    const item = make('li', {class: finding.grave ? 'grave' : null}, name + shortened(finding.text, 1000));
    const at = finding.call === null ? -1 : report.items.itemOf[which][finding.call];
    if (at >= 0)
        item.append(' ', report.callLink(at));
    if (finding.more)
        item.append(make('details', {}, make('summary', {}, 'Which'),
            make('ul', {}, finding.more.slice(0, 100).map(text => make('li', {}, shortened(text, 1000))))));
    return item;
}

function compareLine(report) {
    const count = report.items.differences.length;
    const pages = report.index.compare.pages.filter(page => !page.same).length;
    return make('p', {class: count > 0 || pages > 0 ? 'differ' : 'fine'}, count === 0 && pages === 0 ?
        'No call and no pixel differs.' : counted(count, 'call') + ' and ' + counted(pages, 'page') + ' differ.');
}
