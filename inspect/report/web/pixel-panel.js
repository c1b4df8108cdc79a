// The calls that changed a pixel, in order, with its colour before and after each.

const ENTRIES_AT_ONCE = 500;

class PixelPanel {
    /** @param {!Report} report */
    constructor(report, panel) {
        this.report = report;
        this.panel = panel;
        this.turn = 0;
        replaceContent(panel, make('p', {class: 'empty'},
            'Click on the page, or move over it with the arrow keys and press Enter.'));
    }

    async show(x, y) {
        const turn = ++this.turn;
        const pages = this.report.page.pages;
        const sides = pages.map((page, which) => ({page, which})).filter(side => side.page);
        const name = 'Pixel ' + x + ', ' + y;
        replaceContent(this.panel, make('h2', {}, name), make('p', {class: 'note'}, 'Looking\u2026'));
        const parts = [];
        for (const side of sides) {
            const found = side.page.steps ? await pixelHistory(this.report.stepsOf(side.page), x, y) : null;
            if (turn !== this.turn)
                return;
            parts.push(...this.side(side, sides.length > 1, found));
        }
        replaceContent(this.panel, make('h2', {}, name), parts);
        this.panel.dataset.pixel = x + ',' + y;
    }

    side({page, which}, several, entries) {
        const parts = several ? [make('h3', {}, 'AB'[which] + ', page ' + page.page)] : [];
        if (entries === null)
            return parts.concat(make('p', {class: 'note'},
                'This report has no steps, so that it can\u2019t tell which calls changed the pixel.'));
        const after = entries.length > 0 ? entries.filter(entry => !entry.layer).at(-1) : null;
        const colour = after ? colourText(after.after, false) : '#ffffff';
        announce(counted(entries.length, 'change'));
        return parts.concat(
            make('p', {}, counted(entries.length, 'change') + '; in the end ', swatch(colour), ' ',
                make('code', {}, colour)),
            entries.length > 0 ? this.list(which, entries, this.report.stepsOf(page)) : null,
            page.steps.note ? make('p', {class: 'note'}, page.steps.note) : null);
    }

    list(which, entries, steps) {
        const id = 'touches-' + which;
        const box = make('div', {
            'id': id, 'class': 'touches', 'role': 'listbox', 'tabindex': 0,
            'aria-label': 'Calls that changed the pixel' + (which > 0 ? ', log B' : ''),
        });
        const list = {box, entries, which, current: -1, shown: 0};
        const more = make('button', {type: 'button', class: 'more'});
        const addEntries = () => {
            const next = entries.slice(list.shown, list.shown + ENTRIES_AT_ONCE);
            box.append(...next.map((entry, index) => this.option(list, entry, list.shown + index, steps)));
            list.shown += next.length;
            more.hidden = list.shown >= entries.length;
            more.textContent = 'More: ' + counted(entries.length - list.shown, 'change');
        };
        more.addEventListener('click', addEntries);
        box.addEventListener('keydown', event => this.key(list, event));
        box.addEventListener('click', event => {
            const option = event.target.closest('[role=option]');
            if (option)
                this.choose(list, Number(option.dataset.entry));
        });
        addEntries();
        return make('div', {}, box, more);
    }

    option(list, entry, index, steps) {
        const log = this.report.logs[list.which];
        const about = entry.by >= 0 && entry.kind !== PAINTED ? entry.by : entry.call;
        const column = log.column;
        const around = framesAround(steps, entry.frame).map(call => log.address(call));
        const text = rowText(column, about);
        return make('div', {
            'id': list.box.id + '-' + index, 'role': 'option', 'class': 'touch', 'aria-selected': 'false',
            'data-entry': index, 'data-call': log.address(entry.call), 'data-before': colourText(entry.before, entry.layer),
            'data-after': colourText(entry.after, entry.layer),
        },
        make('span', {class: 'change'}, swatch(entry.before === null ? null : colourText(entry.before, true)),
            make('code', {}, colourText(entry.before, entry.layer)), ' \u2192 ',
            swatch(entry.after === null ? null : colourText(entry.after, true)),
            make('code', {}, colourText(entry.after, entry.layer))),
        make('span', {class: 'touch-call'}, make('strong', {}, log.address(entry.call)), ' ' + log.kind(entry.call),
            about !== entry.call ? ' of ' + log.address(about) : ''),
        text !== '' ? make('span', {class: 'touch-text'}, text) : null,
        around.length > 0 ? make('span', {class: 'touch-text'}, 'in ' + around.join(' in ')) : null);
    }

    choose(list, index) {
        const options = list.box.children;
        if (options[list.current])
            options[list.current].setAttribute('aria-selected', 'false');
        list.current = Math.max(0, Math.min(list.shown - 1, index));
        const option = options[list.current];
        option.setAttribute('aria-selected', 'true');
        option.scrollIntoView({block: 'nearest'});
        list.box.setAttribute('aria-activedescendant', option.id);
        this.report.selectCall(list.which, list.entries[list.current].call, {keepPanel: true});
    }

    key(list, event) {
        const moves = {ArrowDown: list.current + 1, ArrowUp: list.current - 1, Home: 0, End: list.shown - 1};
        if (event.key in moves)
            this.choose(list, moves[event.key]);
        else if (event.key === 'Enter' && list.current >= 0)
            this.report.openPanel('call', true);
        else
            return;
        event.preventDefault();
        event.stopPropagation();
    }
}
