// The log in figures, and where it comes from.

function figuresPanel(report, panel) {
    const logs = report.index.logs;
    const table = (title, rows, number) => make('table', {class: 'figures'}, make('caption', {}, title),
        make('tbody', {}, rows.map(([name, value]) => make('tr', {}, make('th', {scope: 'row'}, name),
            make('td', {class: number && typeof value === 'number' ? 'number' : null},
                typeof value === 'number' ? grouped(value) : value)))));
    replaceContent(panel, make('h2', {}, 'Figures'), logs.map((log, which) => make('section', {},
        make('h3', {}, (logs.length > 1 ? 'AB'[which] + ': ' : '') + shortened(log.name, 200)),
        table('log', [
            ['form', log.form], ['bytes', log.bytes], ['SHA-256', log.sha256 || 'not known, it came through a pipe'],
            ['pages', log.page_count], ['calls', log.calls.of],
            ...(log.calls.count < log.calls.of ? [['of them here', log.calls.count]] : []),
        ], true),
        log.figures.filter(figure => figure.rows.length > 0).map(figure => table(figure.title, figure.rows, true)),
        log.versions.length > 0 ? table('root of the log', log.versions, false) : null)));
}
