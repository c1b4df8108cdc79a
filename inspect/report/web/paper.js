// What goes to paper: the findings, then the pages.

const PAGES_ON_PAPER = 500;

function preparePaper(report) {
    const paper = byId('paper');
    const index = report.index;
    const list = lines => make('ul', {}, lines.map(line => make('li', {}, line)));
    const sections = index.logs.map((log, which) => {
        const found = findingsOf(log);
        const lines = found.flatMap(finding => [shortened(finding.text, 1000),
            ...(finding.more || []).slice(0, 100).map(text => '\u2014 ' + shortened(text, 1000))]);
        return make('section', {class: 'paper-log'},
            make('h2', {}, (index.logs.length > 1 ? 'AB'[which] + ': ' : '') + shortened(log.name, 300)),
            make('p', {}, describeLog(log)),
            make('h3', {}, 'Findings'),
            found.length > 0 ? list(lines) : make('p', {}, 'The log is whole, without damage or warnings.'),
            log.pages.slice(0, PAGES_ON_PAPER).map(page => paperPage(page)));
    });
    replaceContent(paper, make('h1', {}, byId('title').textContent), make('p', {}, byId('made-by').textContent),
        index.compare ? paperDifferences(report) : null, sections);
}

function paperPage(page) {
    const name = 'Page ' + page.page + ', ' + page.width + ' by ' + page.height + ' pixels';
    return make('figure', {}, page.picture ? make('img', {src: pictureAddress(page.picture), alt: name}) :
        make('p', {}, 'There is no picture of this page.'), make('figcaption', {}, name));
}

function paperDifferences(report) {
    const items = report.items;
    const lines = items.differences.slice(0, 200).filter(item => items.isListed(item)).map(item =>
        items.log(item).address(items.call(item)) + ' ' + items.log(item).kind(items.call(item)) + ': ' +
        ITEM_KINDS[items.kind[item]] + (items.detail[item] || []).slice(0, 3).map(
            ([path, attribute]) => ', ' + shortened((path ? path + ' ' : '') + attribute, 120)).join(''));
    return make('section', {}, make('h2', {}, 'Differences'), make('ul', {}, lines.map(line => make('li', {}, line))),
        items.differences.length > 200 ? make('p', {}, 'and ' + grouped(items.differences.length - 200) + ' others') : null);
}
