// Keys that work everywhere on the page, what they do, and light and dark.

const KEYS = [
    ['?', 'this list'],
    ['/', 'search in the calls'],
    ['f', 'filters'],
    ['g', 'go to the page\u2019s picture: arrow keys move over pixels (with Shift by ten), Enter lists the calls'],
    ['t', 'go to the tree of calls: arrow keys move, right and left unfold and fold'],
    ['1 \u2026 6', 'the panels of details'],
    ['. and ,', 'one step of drawing further, back'],
    ['s', 'the page as it is behind the current call, or whole again'],
    ['w', 'the whole page'],
    ['PgDn and PgUp', 'next page, page before (outside of lists)'],
    ['+, \u2212 and 0', 'larger, smaller, as large as there is room'],
    ['o, c, m', 'outline of the shape, of the clips, pixels that the call changed'],
    ['[ and ]', 'fold all in the tree, unfold'],
    ['b', 'dark or light'],
];
const COMPARE_KEYS = [
    ['n and p', 'next difference, difference before'],
    ['d', 'mark pixels in which the pages differ'],
    ['x', 'from A to B and back'],
];

class Keys {
    /** @param {!Report} report */
    constructor(report) {
        this.report = report;
        this.actions = this.makeActions();
        document.addEventListener('keydown', event => this.key(event));
        byId('help').addEventListener('click', () => this.help());
        byId('theme').addEventListener('click', () => this.toggleTheme());
        byId('print').addEventListener('click', () => window.print());
        this.dark = matchMedia('(prefers-color-scheme: dark)').matches;
        matchMedia('(prefers-color-scheme: dark)').addEventListener('change', event => this.setTheme(event.matches));
        this.setTheme(this.dark);
    }

    makeActions() {
        const report = this.report;
        const press = id => () => byId(id).click();
        const focus = (room, id) => () => {
            report.showRoom(room);
            byId(id).focus();
        };
        const actions = {
            '?': () => this.help(), '/': focus('calls', 'search'), 'g': focus('page', 'viewport'),
            't': focus('calls', 'tree'), 'w': press('whole'), '.': () => report.stepBar.move(1),
            ',': () => report.stepBar.move(-1), 's': () => report.toggleSteps(), '+': press('larger'),
            '=': press('larger'), '-': press('smaller'), '0': press('fit'), 'o': press('show-shape'),
            'c': press('show-clip'), 'm': press('show-changed'), 'b': () => this.toggleTheme(),
            'PageDown': press('page-behind'), 'PageUp': press('page-before'), '[': () => report.callsPane.foldAll(true),
            ']': () => report.callsPane.foldAll(false), 'f': () => {
                report.showRoom('calls');
                byId('more-filters').click();
                byId(byId('filters').hidden ? 'search' : 'filter-kind').focus();
            },
        };
        report.panelNames.forEach((name, index) => {
            actions[String(index + 1)] = () => report.openPanel(name, true);
        });
        if (report.items.calls.length > 1)
            Object.assign(actions, {
                'n': press('difference-behind'), 'p': press('difference-before'), 'd': press('show-difference'),
                'x': () => report.setBlend(report.blend < 0.5 ? 1 : 0),
            });
        return actions;
    }

    key(event) {
        const typing = event.target.closest('input:not([type=range]):not([type=checkbox]), select, textarea');
        if (event.ctrlKey || event.altKey || event.metaKey || byId('keys').open)
            return;
        if (typing) {
            if (event.key === 'Escape') {
                byId('tree').focus();
                event.preventDefault();
            }
            return;
        }
        const inRange = event.target.matches('input[type=range]') && event.key.startsWith('Page');
        const action = Object.hasOwn(this.actions, event.key) && !inRange ? this.actions[event.key] : null;
        if (!action)
            return;
        event.preventDefault();
        action();
    }

    help() {
        const keys = this.report.items.calls.length > 1 ? KEYS.concat(COMPARE_KEYS) : KEYS;
        replaceContent(byId('keys-list'), make('dl', {}, keys.map(([key, what]) =>
            [make('dt', {}, make('kbd', {}, key)), make('dd', {}, what)])));
        byId('keys').showModal();
    }

    toggleTheme() {
        this.setTheme(!this.dark);
    }

    setTheme(dark) {
        this.dark = dark;
        document.documentElement.dataset.theme = dark ? 'dark' : 'light';
        byId('theme').setAttribute('aria-pressed', String(dark));
    }
}
