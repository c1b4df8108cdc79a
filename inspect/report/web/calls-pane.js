// The list of calls: a tree that folds, what is searched for in it, and filters.

const MOST_CHOICES = 500;
const DIFFERENCE_SIGNS = ['', '\u2260', '\u2212', '+'];

class CallsPane {
    /**
     * @param {!Items} items
     * @param {{choose: function(number), page: function(): number}} listener is told the item that was chosen
     */
    constructor(items, listener) {
        this.items = items;
        this.listener = listener;
        this.folded = new Set();
        this.matches = null;
        this.texts = this.makeTexts();
        this.tree = new VirtualTree(byId('tree'), {
            level: item => items.level[item],
            expanded: item => items.hasChildren(item) ? this.matches !== null || !this.folded.has(item) : null,
            place: item => items.placeAmong(item),
            fill: (row, item, fold) => this.fillRow(row, item, fold),
            choose: item => listener.choose(item),
            toggle: item => this.toggle(item),
        });
        this.prepareFilters();
        this.refresh();
    }

    /** What is searched in, of each item in small letters. */
    makeTexts() {
        const texts = new Array(this.items.count);
        for (let item = 0; item < this.items.count; ++item) {
            if (!this.items.isListed(item)) {
                texts[item] = '';
                continue;
            }
            const log = this.items.log(item);
            const call = this.items.call(item);
            const column = log.column;
            const colour = column.colour[call] < 0 ? '' : hexColour(column.colour[call]);
            texts[item] = [column.address[call], log.kind(call), column.op[call], column.paint[call], colour,
                column.text[call]].join('\n').toLowerCase();
        }
        return texts;
    }

    prepareFilters() {
        const kinds = new Map();
        const operators = new Map();
        for (let item = 0; item < this.items.count; ++item) {
            if (!this.items.isListed(item))
                continue;
            const log = this.items.log(item);
            const call = this.items.call(item);
            kinds.set(log.kind(call), (kinds.get(log.kind(call)) || 0) + 1);
            const operator = log.column.op[call];
            if (operator !== '')
                operators.set(operator, (operators.get(operator) || 0) + 1);
        }
        this.offer(byId('filter-kind'), kinds);
        this.offer(byId('filter-operator'), operators);
        for (const id of ['search', 'filter-colour', 'filter-text'])
            byId(id).addEventListener('input', () => this.refresh());
        for (const id of ['filter-kind', 'filter-operator', 'filter-warnings', 'filter-nothing', 'filter-page',
            'filter-differs'])
            byId(id).addEventListener('change', () => this.refresh());
        byId('no-filters').addEventListener('click', () => this.clearFilters());
        byId('more-filters').addEventListener('click', () => this.showFilters(byId('filters').hidden));
        byId('search').addEventListener('keydown', event => {
            if (event.key === 'ArrowDown' || event.key === 'Enter') {
                event.preventDefault();
                this.focusFirst();
            }
        });
        byId('filter-differs-label').hidden = this.items.calls.length < 2;
    }

    offer(select, counts) {
        const sorted = Array.from(counts).sort((a, b) => a[0] < b[0] ? -1 : 1);
        replaceContent(select, make('option', {value: ''}, 'all'), sorted.slice(0, MOST_CHOICES).map(([name, count]) =>
            make('option', {value: name}, shortened(name, 60) + ' (' + grouped(count) + ')')));
    }

    showFilters(shown) {
        byId('filters').hidden = !shown;
        byId('more-filters').setAttribute('aria-expanded', String(shown));
    }

    clearFilters() {
        for (const id of ['search', 'filter-kind', 'filter-operator', 'filter-colour', 'filter-text'])
            byId(id).value = '';
        for (const id of ['filter-warnings', 'filter-nothing', 'filter-page', 'filter-differs'])
            byId(id).checked = false;
        this.refresh();
    }

    focusFirst() {
        byId('tree').focus();
        if (this.firstMatch !== undefined)
            this.tree.choose(this.firstMatch);
    }

    /** The conditions that are set; an item has to meet all. */
    conditions() {
        const value = id => byId(id).value.trim().toLowerCase();
        const conditions = value('search').split(/\s+/).filter(word => word !== '').map(
            word => item => this.texts[item].includes(word));
        const add = (wanted, condition) => {
            if (wanted)
                conditions.push(item => condition(this.items.log(item), this.items.call(item), item));
        };
        const kind = byId('filter-kind').value;
        const operator = byId('filter-operator').value;
        add(kind, (log, call) => log.kind(call) === kind);
        add(operator, (log, call) => log.column.op[call] === operator);
        add(value('filter-colour'), colourCondition(value('filter-colour')));
        add(value('filter-text'), (log, call) => log.column.text[call].toLowerCase().includes(value('filter-text')));
        add(byId('filter-warnings').checked, (log, call) => log.column.warnings[call].length > 0);
        add(byId('filter-nothing').checked, (log, call) => log.changesNothing(call));
        add(byId('filter-page').checked, (log, call) => log.pageFor(call) === this.listener.page());
        add(byId('filter-differs').checked, (log, call, item) => this.items.kind[item] !== SAME);
        return conditions;
    }

    /** Brings the list in line with what is searched for and folded. */
    refresh() {
        const conditions = this.conditions();
        const active = conditions.length > 0;
        this.matches = active ? new Uint8Array(this.items.count) : null;
        byId('more-filters').classList.toggle('active', active);
        const shown = active ? this.matching(conditions) : this.unfolded();
        this.tree.show(shown);
        if (this.tree.current >= 0 && this.tree.rowOf.has(this.tree.current))
            this.tree.setCurrent(this.tree.current);
    }

    matching(conditions) {
        const {order, parent} = this.items;
        const MATCH = 1, ABOVE = 2;
        let count = 0;
        this.firstMatch = undefined;
        for (const item of order) {
            if (!conditions.every(condition => condition(item)))
                continue;
            if (this.firstMatch === undefined)
                this.firstMatch = item;
            ++count;
            this.matches[item] = MATCH;
            for (let above = parent[item]; above >= 0 && this.matches[above] === 0; above = parent[above])
                this.matches[above] = ABOVE;
        }
        byId('count').textContent = grouped(count) + ' of ' + counted(order.length, 'call');
        return order.filter(item => this.matches[item] !== 0);
    }

    unfolded() {
        const {order, level} = this.items;
        byId('count').textContent = counted(order.length, 'call');
        this.firstMatch = order[0];
        if (this.folded.size === 0)
            return order;
        let below = Infinity;
        return order.filter(item => {
            if (level[item] > below)
                return false;
            below = this.folded.has(item) ? level[item] : Infinity;
            return true;
        });
    }

    toggle(item) {
        if (this.matches !== null)
            return;
        if (!this.folded.delete(item))
            this.folded.add(item);
        this.refresh();
        announce(this.folded.has(item) ? 'folded' : 'unfolded');
    }

    /** Folds all that has something below it, or opens all. */
    foldAll(fold) {
        this.folded = new Set(fold ? Array.from(this.items.children.keys()).filter(item => item >= 0 &&
            this.items.level[item] > 0) : []);
        this.refresh();
    }

    /** Makes an item the current one; what hides it is opened. */
    setCurrent(item) {
        let hidden = false;
        for (let above = this.items.parent[item]; above >= 0; above = this.items.parent[above])
            hidden = this.folded.delete(above) || hidden;
        if (hidden)
            this.refresh();
        if (this.matches !== null && this.matches[item] === 0)
            this.clearFilters();
        this.tree.setCurrent(item);
    }

    fillRow(row, item, fold) {
        const log = this.items.log(item);
        const call = this.items.call(item);
        const column = log.column;
        const difference = this.items.kind[item];
        row.classList.toggle('context', this.matches !== null && this.matches[item] === 2);
        row.classList.toggle('nothing', log.changesNothing(call));
        if (difference !== SAME)
            row.classList.add(['', 'changed', 'missing', 'added'][difference]);
        row.append(
            make('span', {class: 'c-address'}, fold, column.address[call]),
            make('span', {class: 'c-kind'}, log.kind(call)),
            swatch(column.colour[call] < 0 ? null : hexColour(column.colour[call])),
            make('span', {class: 'c-text'}, rowText(column, call)));
        const flags = [];
        if (difference !== SAME)
            flags.push([DIFFERENCE_SIGNS[difference], ITEM_KINDS[difference]]);
        if (column.warnings[call].length > 0)
            flags.push(['\u26a0', counted(column.warnings[call].length, 'warning')]);
        if (log.changesNothing(call))
            flags.push(['\u2205', 'changes nothing']);
        row.append(make('span', {class: 'flags'}, flags.map(([sign, name]) => make('span', {title: name},
            make('span', {'aria-hidden': 'true'}, sign), make('span', {class: 'visually-hidden'}, name)))));
    }
}

function colourCondition(wanted) {
    const short = /^#?([0-9a-f])([0-9a-f])([0-9a-f])$/.exec(wanted);
    const hex = short ? '#' + short.slice(1).map(digit => digit + digit).join('') :
        /^#?[0-9a-f]{6}$/.test(wanted) ? '#' + wanted.replace('#', '') : null;
    return (log, call) => (hex !== null && log.column.colour[call] >= 0 && hexColour(log.column.colour[call]) === hex) ||
        log.column.paint[call].toLowerCase().includes(wanted);
}

/** What a row says of a call beside its address, kind and colour. */
function rowText(column, call) {
    const parts = [];
    if (column.text[call] !== '')
        parts.push('\u201c' + shortened(column.text[call], 80) + '\u201d');
    if (column.op[call] !== '' && column.op[call] !== 'source-over')
        parts.push(shortened(column.op[call], 60));
    if (column.paint[call] !== '')
        parts.push(shortened(rounded(column.paint[call]), 60));
    if (column.clips[call] > 0)
        parts.push(counted(column.clips[call], 'clip') + (column.clip[call] ? ' ' + boxText(column.clip[call]) : ''));
    return parts.join(' \u00b7 ');
}

/** A small field of a colour; one without any stands for no colour. */
function swatch(colour) {
    const field = make('span', {'class': colour === null ? 'swatch none' : 'swatch', 'aria-hidden': 'true'});
    if (colour !== null)
        field.style.setProperty('--colour', colour);
    return field;
}

/** A text with its numbers to three places. */
function rounded(text) {
    return text.length > 1000 ? text : text.replace(/\d+\.\d{4,}/g, number => String(Math.round(Number(number) * 1000) / 1000));
}

function boxText(box) {
    return box.map(number => Math.round(number * 100) / 100).join(',');
}
