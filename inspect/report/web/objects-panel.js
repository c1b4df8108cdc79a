// Images, glyphs, tickets and gradients as pictures.

const OBJECTS_AT_ONCE = 60;

/** One of the things that calls use, with its picture or its text. */
function objectFigure(report, log, object, withCall) {
    const caption = make('figcaption', {}, make('strong', {}, object.kind), ' ', shortened(object.label, 200));
    if (withCall && object.call >= 0) {
        const item = report.items.itemOf[report.logs.indexOf(log)][object.call];
        caption.append(make('br', {}), item >= 0 ? report.callLink(item) : '', ' ' + counted(object.uses, 'use'));
    }
    if (object.note)
        caption.append(make('br', {}), make('span', {class: 'note'}, shortened(object.note, 300)));
    return make('figure', {class: 'object ' + (/^[a-z]+$/.test(object.kind) ? object.kind : '')},
        objectPicture(object), caption);
}

function objectPicture(object) {
    const label = object.kind + ' ' + shortened(object.label, 100);
    if (object.picture)
        return make('img', {src: pictureAddress(object.picture), alt: printable(label), loading: 'lazy',
            class: object.width > 0 && object.width < 64 ? 'pixels' : null});
    if (object.d && object.view)
        return makeSvg('svg', {'role': 'img', 'aria-label': printable(label), 'viewBox': object.view.join(' ')},
            makeSvg('path', {d: object.d}));
    if (object.stops) {
        const strip = make('div', {'class': 'gradient-strip', 'role': 'img', 'aria-label': printable(label)});
        const stops = object.stops.map(([at, colour]) => hexColour(colour) + ' ' + 100 * at + '%');
        strip.style.background = stops.length === 1 ? hexColour(object.stops[0][1]) :
            'linear-gradient(to right, ' + stops.join(', ') + ')';
        return strip;
    }
    if (object.content)
        return make('details', {}, make('summary', {}, 'Text'),
            make('pre', {'class': 'record', 'tabindex': 0, 'role': 'region', 'aria-label': printable(label)},
                object.content));
    return make('div', {'class': 'no-picture', 'aria-hidden': 'true'}, '\u2014');
}

class ObjectsPanel {
    /** @param {!Report} report */
    constructor(report, panel) {
        this.report = report;
        this.panel = panel;
        this.kind = '';
        this.started = false;
    }

    /** What there is, when the panel is looked at for the first time. */
    async start() {
        if (this.started)
            return;
        this.started = true;
        replaceContent(this.panel, make('h2', {}, 'What calls use'), this.kinds(), this.report.logs.map(
            (log, which) => make('section', {}, this.report.logs.length > 1 ? make('h3', {}, 'AB'[which]) : null,
                make('p', {class: 'count'}), make('div', {class: 'gallery'}),
                make('button', {type: 'button', class: 'more'}), log.log.objects.left_out > 0 ?
                    make('p', {class: 'note'}, counted(log.log.objects.left_out, 'more use') +
                        ' of objects for which there was no room in the report') : null)));
        await this.fill();
    }

    kinds() {
        const choose = kind => () => {
            this.kind = kind;
            this.fill();
        };
        return make('div', {'class': 'bar small', 'role': 'group', 'aria-label': 'Kind'},
            [['', 'All'], ['image', 'Images'], ['glyph', 'Glyphs'], ['ticket', 'Tickets'], ['gradient', 'Gradients']].map(
                ([kind, name]) => make('button', {'type': 'button', 'data-kind': kind, 'onclick': choose(kind)}, name)));
    }

    async fill() {
        for (const button of this.panel.querySelectorAll('[data-kind]'))
            button.setAttribute('aria-pressed', String(button.dataset.kind === this.kind));
        const sections = this.panel.querySelectorAll('section');
        await Promise.all(this.report.logs.map((log, which) => this.fillSection(log, sections[which])));
    }

    async fillSection(log, section) {
        const kind = this.kind;
        const places = await this.placesOf(log, kind);
        const gallery = section.querySelector('.gallery');
        const old = section.querySelector('.more');
        const more = make('button', {type: 'button', class: 'more'});
        let shown = 0;
        const add = async () => {
            const next = places.slice(shown, shown + OBJECTS_AT_ONCE);
            shown += next.length;
            const objects = await Promise.all(next.map(place => log.object(place)));
            if (this.kind !== kind)
                return;
            gallery.append(...objects.map(object => objectFigure(this.report, log, object, true)));
            more.hidden = shown >= places.length;
            more.textContent = 'More: ' + grouped(places.length - shown);
        };
        more.addEventListener('click', add);
        old.replaceWith(more);
        gallery.replaceChildren();
        section.querySelector('.count').textContent = places.length === 0 ? 'None.' : counted(places.length, 'thing');
        await add();
    }

    async placesOf(log, kind) {
        const places = [];
        for (const block of log.log.objects.blocks) {
            const kinds = (await blockJson(block.list)).kind;
            for (let i = 0; i < block.count; ++i)
                if (kind === '' || kinds[i] === kind)
                    places.push(block.first + i);
        }
        return places;
    }
}
