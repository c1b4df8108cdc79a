// A list of rows of which only those are made that are seen, with the names and roles of a tree.

// Browsers don't scroll much further than this; longer lists are scrolled over in larger steps.
const TALLEST_LIST = 8e6;
const ROWS_BEYOND = 6;

class VirtualTree {
    /**
     * @param {HTMLElement} container has the role of a tree and is scrolled
     * @param {{level: function(number): number, expanded: function(number): ?boolean, place: function(number):
     *     !Array<number>, fill: function(HTMLElement, number, HTMLElement), choose: function(number), toggle: function(number)}}
     *     source what there is of an item; `expanded` is null for one without others below it, `place` is its place
     *     among its neighbours, from 1, and their number; `fill` is given the row and the sign that folds it
     */
    constructor(container, source) {
        this.container = container;
        this.source = source;
        this.items = new Int32Array(0);
        this.rowOf = new Map();
        this.current = -1;
        this.space = make('div', {class: 'tree-space', role: 'presentation'});
        container.append(this.space);
        this.rowHeight = 28;
        this.drawn = [-1, -1];
        container.addEventListener('scroll', () => this.draw(false), {passive: true});
        container.addEventListener('keydown', event => this.key(event));
        container.addEventListener('click', event => this.click(event));
        new ResizeObserver(() => this.draw(true)).observe(container);
    }

    /** The items that are shown, in order. */
    show(items) {
        this.items = items;
        this.rowOf = new Map();
        for (let row = 0; row < items.length; ++row)
            this.rowOf.set(items[row], row);
        this.draw(true);
    }

    /** Makes an item the current one, without telling that it has been chosen, and brings it into sight. */
    setCurrent(item) {
        this.current = item;
        const row = this.rowOf.get(item);
        if (row !== undefined)
            this.reveal(row);
        this.draw(true);
    }

    /** Brings an item to the top of what is in sight. */
    bringUp(item) {
        const row = this.rowOf.get(item);
        if (row === undefined)
            return;
        this.measure();
        this.space.style.height = this.height + 'px';
        const room = this.full - this.view;
        const top = Math.min(row * this.rowHeight, Math.max(0, room));
        this.container.scrollTop = this.full === this.height ? top : top * (this.height - this.view) / room;
    }

    measure() {
        const rem = parseFloat(getComputedStyle(document.documentElement).fontSize) || 16;
        this.rowHeight = Math.max(16, Math.round(rem * 1.75));
        this.full = this.items.length * this.rowHeight;
        this.height = Math.min(this.full, TALLEST_LIST);
        this.view = this.container.clientHeight;
    }

    /** The distance of the first pixel in sight from the list's beginning, were the list as tall as all its rows. */
    offset() {
        const room = this.height - this.view;
        const top = Math.max(0, Math.min(this.container.scrollTop, room));
        return room <= 0 || this.full === this.height ? top : top * (this.full - this.view) / room;
    }

    reveal(row) {
        this.measure();
        this.space.style.height = this.height + 'px';
        const top = row * this.rowHeight;
        const offset = this.offset();
        let wanted = offset;
        if (top < offset)
            wanted = Math.max(0, top - this.rowHeight);
        else if (top + 2 * this.rowHeight > offset + this.view)
            wanted = top + 2 * this.rowHeight - this.view;
        if (wanted === offset)
            return;
        const room = this.full - this.view;
        this.container.scrollTop = this.full === this.height ? wanted : wanted * (this.height - this.view) / room;
    }

    draw(anew) {
        this.measure();
        const offset = this.offset();
        const first = Math.max(0, Math.floor(offset / this.rowHeight) - ROWS_BEYOND);
        const last = Math.min(this.items.length, Math.ceil((offset + this.view) / this.rowHeight) + ROWS_BEYOND);
        const shift = this.container.scrollTop - offset;
        if (!anew && first === this.drawn[0] && last === this.drawn[1] && this.full === this.height)
            return;
        this.drawn = [first, last];
        this.space.style.height = this.height + 'px';
        const rows = [];
        for (let row = first; row < last; ++row)
            rows.push(this.makeRow(row, Math.max(0, row * this.rowHeight + shift)));
        this.space.replaceChildren(...rows);
        const current = this.rowOf.get(this.current);
        const seen = current !== undefined && current >= first && current < last;
        if (seen)
            this.container.setAttribute('aria-activedescendant', this.rowId(this.current));
        else
            this.container.removeAttribute('aria-activedescendant');
    }

    rowId(item) {
        return this.container.id + '-' + item;
    }

    makeRow(row, top) {
        const item = this.items[row];
        const expanded = this.source.expanded(item);
        const [place, of] = this.source.place(item);
        const level = this.source.level(item);
        const element = make('div', {
            'id': this.rowId(item), 'class': 'row', 'role': 'treeitem', 'aria-level': level + 1,
            'aria-expanded': expanded === null ? null : String(expanded), 'aria-setsize': of, 'aria-posinset': place,
            'aria-selected': String(item === this.current), 'data-item': item,
        });
        element.style.transform = 'translateY(' + top + 'px)';
        element.style.height = this.rowHeight + 'px';
        element.style.setProperty('--level', Math.min(level, 12));
        this.source.fill(element, item, make('span', {'class': 'fold', 'aria-hidden': 'true'},
            expanded === null ? '' : expanded ? '\u25be' : '\u25b8'));
        return element;
    }

    click(event) {
        const row = event.target.closest('.row');
        if (!row)
            return;
        const item = Number(row.dataset.item);
        if (event.target.closest('.fold') && this.source.expanded(item) !== null)
            this.source.toggle(item);
        else
            this.choose(item);
    }

    choose(item) {
        this.setCurrent(item);
        this.source.choose(item);
    }

    moveTo(row) {
        if (this.items.length > 0)
            this.choose(this.items[Math.max(0, Math.min(this.items.length - 1, row))]);
    }

    key(event) {
        if (event.ctrlKey || event.altKey || event.metaKey || this.items.length === 0)
            return;
        const row = this.rowOf.has(this.current) ? this.rowOf.get(this.current) : -1;
        const page = Math.max(1, Math.floor(this.view / this.rowHeight) - 1);
        const moves = {
            ArrowDown: row + 1, ArrowUp: Math.max(0, row - 1), PageDown: row + page, PageUp: row - page, Home: 0,
            End: this.items.length - 1,
        };
        if (event.key in moves)
            this.moveTo(moves[event.key]);
        else if (event.key === 'ArrowRight' && row >= 0)
            this.open(row);
        else if (event.key === 'ArrowLeft' && row >= 0)
            this.close(row);
        else if ((event.key === 'Enter' || event.key === ' ') && row >= 0)
            this.source.choose(this.current);
        else
            return;
        event.preventDefault();
        event.stopPropagation();
    }

    open(row) {
        const expanded = this.source.expanded(this.current);
        if (expanded === false)
            this.source.toggle(this.current);
        else if (expanded === true)
            this.moveTo(row + 1);
    }

    close(row) {
        if (this.source.expanded(this.current) === true) {
            this.source.toggle(this.current);
            return;
        }
        const level = this.source.level(this.current);
        for (let above = row - 1; above >= 0; --above)
            if (this.source.level(this.items[above]) < level) {
                this.moveTo(above);
                return;
            }
    }
}
