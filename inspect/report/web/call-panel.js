// All that there is of one call.

const ROWS_AT_ONCE = 300;
const LONGEST_TEXT = 20000;

class CallPanel {
    /** @param {!Report} report */
    constructor(report, panel) {
        this.report = report;
        this.panel = panel;
        this.form = 'table';
        this.turn = 0;
        replaceContent(panel, make('p', {class: 'empty'}, 'Choose a call, or click on the page.'));
    }

    async show(item) {
        const turn = ++this.turn;
        const items = this.report.items;
        const sides = items.calls.map((calls, which) => ({which, log: items.logs[which], call: calls[item]}))
            .filter(side => side.call >= 0);
        const parts = [this.heading(item)];
        const difference = this.differences(item);
        if (difference)
            parts.push(difference);
        const main = {log: items.log(item), call: items.call(item), which: items.which(item)};
        parts.push(this.facts(item, main));
        const picture = make('div', {class: 'shape-picture'});
        const objects = make('div', {class: 'objects'});
        const records = make('div', {class: 'records'});
        replaceContent(this.panel, parts, picture, objects, records);
        this.panel.scrollTop = 0;
        await this.showPicture(picture, main, () => turn === this.turn);
        if (turn !== this.turn)
            return;
        await this.showObjects(objects, main, () => turn === this.turn);
        const texts = await Promise.all(sides.map(side => side.log.record(side.call)));
        if (turn === this.turn)
            this.showRecords(records, item, sides, texts);
    }

    heading(item) {
        const log = this.report.items.log(item);
        const call = this.report.items.call(item);
        return make('h2', {}, make('span', {class: 'address'}, log.address(call)), ' ' + log.kind(call));
    }

    facts(item, {log, call}) {
        const column = log.column;
        const list = make('dl', {class: 'facts'});
        const add = (name, ...content) => list.append(make('dt', {}, name), make('dd', {}, ...content));
        const page = column.page[call];
        add('page', page > 0 ? String(page) : 'on no page');
        const around = [];
        for (let above = this.report.items.parent[item]; above >= 0; above = this.report.items.parent[above])
            around.push(this.report.callLink(above));
        if (around.length > 0)
            add('in', ...around.flatMap((link, index) => index > 0 ? [' in ', link] : [link]));
        if (column.op[call] !== '')
            add('operator', shortened(column.op[call], LONGEST_TEXT));
        if (column.paint[call] !== '')
            add('paints with', swatch(column.colour[call] < 0 ? null : hexColour(column.colour[call])), ' ',
                shortened(column.paint[call], LONGEST_TEXT));
        if (column.text[call] !== '')
            add('text', make('q', {}, shortened(column.text[call], LONGEST_TEXT)));
        if (column.box[call])
            add('box', make('span', {class: 'number'}, boxText(column.box[call])));
        if (column.clips[call] > 0)
            add('clips', counted(column.clips[call], 'clip'), column.clip[call] ?
                ', which leave ' + boxText(column.clip[call]) : '');
        add('changes', ...this.effectOf(item, log, call));
        for (const warning of column.warnings[call])
            add('warning', make('span', {class: 'warning'}, shortened(warning, LONGEST_TEXT)));
        add('in the log', 'line ' + grouped(column.line[call]) + ', byte ' + grouped(column.byte[call]) + ', ' +
            counted(column.whole[call], 'byte'));
        return list;
    }

    effectOf(item, log, call) {
        const effect = log.why.get(call);
        if (!effect)
            return ['not told: it paints on no page of this report'];
        if (effect.pixels > 0)
            return [counted(effect.pixels, 'pixel') + (effect.area ? ' in ' + boxText(effect.area) : '')];
        const reason = 'nothing: ' + (this.report.index.reasons[effect.why] || 'no reason told');
        const cause = effect.of >= 0 ? this.report.items.itemOf[this.report.items.which(item)][effect.of] : -1;
        return cause >= 0 ? [reason, ', because of ', this.report.callLink(cause)] : [reason];
    }

    differences(item) {
        const items = this.report.items;
        if (items.calls.length < 2 || items.kind[item] === SAME)
            return null;
        const detail = items.detail[item] || [];
        const moved = items.moved[item];
        const notes = [ITEM_KINDS[items.kind[item]]];
        if (items.twice[item])
            notes.push('the same as the call beside it');
        if (moved >= 0) {
            const other = items.kind[item] === MISSING ? 1 : 0;
            notes.push('stands elsewhere in ' + 'AB'[other] + ': ' + items.logs[other].address(moved));
        }
        const value = text => text === null ? make('i', {}, 'missing') : make('code', {}, shortened(text, 4000));
        return make('section', {class: 'differences'},
            make('p', {}, make('strong', {}, notes.join('; '))),
            detail.length === 0 ? null : make('div', {class: 'wide', tabindex: 0, role: 'region',
                'aria-label': 'Differing attributes'}, make('table', {},
                make('thead', {}, make('tr', {}, ...['attribute', 'A', 'B'].map(name => make('th', {scope: 'col'}, name)))),
                make('tbody', {}, detail.slice(0, ROWS_AT_ONCE).map(([path, attribute, a, b, at, count]) => [
                    make('tr', {}, make('th', {scope: 'rowgroup', colspan: 3, class: 'path'}, path === '' ? 'the call' : path)),
                    make('tr', {}, make('th', {scope: 'row'}, attribute !== '' ? attribute : count > 0 ?
                        'data from ' + grouped(at) + ', ' + grouped(count) + ' differ' : 'the element'),
                    make('td', {class: 'side-a'}, value(a)), make('td', {class: 'side-b'}, value(b)))])))));
    }

    async showPicture(place, {log, call}, current) {
        const {shape, clip} = await log.outlines(call);
        if (!current() || shape.length + clip.length === 0)
            return;
        const group = makeSvg('g', {},
            clip.map(one => makeSvg('path', {'class': 'clip', 'd': one.d, 'fill-rule': one.rule})),
            shape.map(one => makeSvg('path', {
                'class': one.stroke === null || one.stroke === undefined ? 'shape filled' : 'shape stroked',
                'd': one.d, 'fill-rule': one.rule, 'stroke-width': one.stroke,
            })));
        const picture = makeSvg('svg', {role: 'img', 'aria-label': 'Shape and clips of the call'}, group);
        const notes = [];
        if (shape.some(one => one.cut) || clip.some(one => one.cut))
            notes.push('too long to be shown whole');
        if (clip.some(one => one.inside === false))
            notes.push('a clip keeps what lies outside of it');
        if (log.column.page[call] === 0)
            notes.push('in the units of its resource; the page has an outline where the resource is painted');
        replaceContent(place, make('h3', {}, 'Shape and clips'), picture,
            notes.length > 0 ? make('p', {class: 'note'}, notes.join('; ')) : null);
        fitPicture(picture, group, shape.reduce((widest, one) => Math.max(widest, one.stroke || 0), 0));
    }

    async showObjects(place, {log, call}, current) {
        const uses = log.column.objects[call] || [];
        if (uses.length === 0)
            return;
        const objects = await Promise.all(uses.slice(0, 60).map(use => log.object(use)));
        if (!current())
            return;
        replaceContent(place, make('h3', {}, 'What it uses'),
            make('div', {class: 'gallery'}, objects.map(object => objectFigure(this.report, log, object, false))),
            uses.length > objects.length ? make('p', {class: 'note'}, 'and ' + counted(uses.length - objects.length,
                'more', 'more')) : null);
    }

    showRecords(place, item, sides, texts) {
        const draw = () => {
            for (const button of place.querySelectorAll('[data-form]'))
                button.setAttribute('aria-pressed', String(button.dataset.form === this.form));
            const detail = this.report.items.kind[item] === CHANGED ? this.report.items.detail[item] || [] : [];
            const marked = new Set(detail.map(([path, attribute]) => path + '\n' + attribute));
            replaceContent(body, sides.map((side, index) => make('section', {},
                sides.length > 1 ? make('h4', {}, 'AB'[side.which] + ': ' + side.log.address(side.call)) : null,
                this.recordBody(side, texts[index], marked))));
        };
        const choose = form => () => {
            this.form = form;
            draw();
        };
        const body = make('div', {});
        replaceContent(place, make('h3', {}, 'Record'),
            make('div', {class: 'bar small', role: 'group', 'aria-label': 'Form of the record'},
                make('button', {'type': 'button', 'data-form': 'table', 'onclick': choose('table')}, 'Table'),
                make('button', {'type': 'button', 'data-form': 'log', 'onclick': choose('log')}, 'As in the log')),
            body);
        draw();
    }

    recordBody(side, text, marked) {
        if (text === null)
            return make('p', {class: 'note'}, 'This report doesn\u2019t have the record.');
        const column = side.log.column;
        const cut = column.whole[side.call] > column.size[side.call] ? make('p', {class: 'note'},
            'Abridged: ' + counted(column.whole[side.call], 'byte') + ' in the log. The whole: orvlog show LOG ' +
            side.log.address(side.call)) : null;
        if (this.form === 'log')
            return make('div', {}, cut, make('pre', {'class': 'record', 'tabindex': 0, 'role': 'region',
                'aria-label': 'The record as the log has it'}, text));
        return make('div', {}, cut, this.recordTable(recordRows(text), marked));
    }

    recordTable(rows, marked) {
        const body = make('tbody', {});
        const more = make('button', {type: 'button', class: 'more'});
        let shown = 0;
        const addRows = () => {
            const next = rows.slice(shown, shown + ROWS_AT_ONCE);
            shown += next.length;
            body.append(...next.map(row => this.recordRow(row, marked)));
            more.hidden = shown >= rows.length;
            more.textContent = 'More: ' + counted(rows.length - shown, 'row');
        };
        more.addEventListener('click', addRows);
        addRows();
        return make('div', {'class': 'wide', 'tabindex': 0, 'role': 'region', 'aria-label': 'The record as a table'},
            make('table', {class: 'record-table'},
                make('thead', {}, make('tr', {}, ...['element', 'attribute', 'value'].map(
                    name => make('th', {scope: 'col'}, name)))), body), more);
    }

    recordRow(row, marked) {
        const differs = marked.has(row.path + '\n' + row.name);
        const element = make('th', {scope: 'row', title: row.path}, row.first ? row.element : '');
        element.style.setProperty('--level', Math.min(row.level, 10));
        return make('tr', {class: differs ? 'differs' : null}, element, make('td', {}, row.name),
            make('td', {class: 'value'}, shortened(row.value, 2000),
                differs ? make('span', {class: 'visually-hidden'}, ' differs') : null));
    }
}

/** Shows all of a drawing. How large it is, is known when it is laid out, which may be later on small screens. */
function fitPicture(picture, group, strokeWidth) {
    const observer = new ResizeObserver(() => {
        if (picture.clientWidth === 0)
            return;
        observer.disconnect();
        const box = group.getBBox();
        const edge = strokeWidth / 2 + 0.03 * Math.max(box.width, box.height, 1e-6);
        picture.setAttribute('viewBox', [box.x - edge, box.y - edge, box.width + 2 * edge, box.height + 2 * edge].join(' '));
    });
    observer.observe(picture);
}
