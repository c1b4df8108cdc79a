// A page as a picture: how large it is shown, what is marked on it, and which pixel is pointed at.

const LARGEST_ZOOM = 32;
const SMALLEST_ZOOM = 0.05;

class PageView {
    /** @param {{point: function(number, number)}} listener is told which pixel is asked about */
    constructor(listener) {
        this.listener = listener;
        this.viewport = byId('viewport');
        this.sheet = byId('sheet');
        this.picture = byId('picture');
        this.marks = byId('marks');
        this.outlines = byId('outlines');
        this.width = 0;
        this.height = 0;
        this.zoom = 1;
        this.fitting = true;
        this.cursor = null;
        this.shown = {shape: true, clip: true, changed: true, difference: true};
        this.viewport.addEventListener('click', event => this.click(event));
        this.viewport.addEventListener('keydown', event => this.key(event));
        this.viewport.addEventListener('wheel', event => this.wheel(event), {passive: false});
        byId('smaller').addEventListener('click', () => this.zoomBy(1 / 1.5));
        byId('larger').addEventListener('click', () => this.zoomBy(1.5));
        byId('fit').addEventListener('click', () => this.fit());
        new ResizeObserver(() => this.resized()).observe(this.viewport);
        for (const name of Object.keys(this.shown))
            byId('show-' + name).addEventListener('click', () => this.toggle(name));
    }

    toggle(name) {
        this.shown[name] = !this.shown[name];
        byId('show-' + name).setAttribute('aria-pressed', String(this.shown[name]));
        this.applyShown();
    }

    applyShown() {
        for (const [name, shown] of Object.entries(this.shown))
            this.sheet.classList.toggle('without-' + name, !shown);
        if (this.onMarks)
            this.onMarks();
    }

    setSize(width, height) {
        const same = width === this.width && height === this.height;
        this.width = width;
        this.height = height;
        if (same)
            return;
        for (const canvas of [this.picture, this.marks]) {
            canvas.width = width;
            canvas.height = height;
        }
        this.outlines.setAttribute('viewBox', '0 0 ' + width + ' ' + height);
        this.cursor = null;
        this.layOut();
    }

    /** @return {!CanvasRenderingContext2D} to draw the page on */
    context() {
        return this.picture.getContext('2d');
    }

    layOut() {
        if (this.width === 0)
            return;
        if (this.fitting) {
            const room = 16;
            const across = (this.viewport.clientWidth - room) / this.width;
            const down = (this.viewport.clientHeight - room) / this.height;
            this.zoom = Math.max(SMALLEST_ZOOM, Math.min(across, down, 8));
        }
        this.sheet.style.width = this.width * this.zoom + 'px';
        this.sheet.style.height = this.height * this.zoom + 'px';
        this.sheet.classList.toggle('pixels', this.zoom >= 2);
        byId('zoom').textContent = Math.round(this.zoom * 100) + ' %';
        this.drawCursor();
    }

    resized() {
        if (this.fitting)
            this.layOut();
    }

    fit() {
        this.fitting = true;
        this.layOut();
    }

    /** Zooms, so that a place of the page stays where it is in the window. */
    zoomBy(factor, at) {
        const view = this.viewport;
        const x = at ? at.x : view.clientWidth / 2;
        const y = at ? at.y : view.clientHeight / 2;
        const before = this.zoom;
        const left = this.sheet.offsetLeft;
        const top = this.sheet.offsetTop;
        const page = [(view.scrollLeft + x - left) / before, (view.scrollTop + y - top) / before];
        this.fitting = false;
        this.zoom = Math.max(SMALLEST_ZOOM, Math.min(LARGEST_ZOOM, before * factor));
        this.layOut();
        view.scrollLeft = page[0] * this.zoom + this.sheet.offsetLeft - x;
        view.scrollTop = page[1] * this.zoom + this.sheet.offsetTop - y;
    }

    wheel(event) {
        if (!event.ctrlKey)
            return;
        event.preventDefault();
        const frame = this.viewport.getBoundingClientRect();
        this.zoomBy(Math.exp(-event.deltaY / 300), {x: event.clientX - frame.left, y: event.clientY - frame.top});
    }

    click(event) {
        const frame = this.sheet.getBoundingClientRect();
        const x = Math.floor((event.clientX - frame.left) / this.zoom);
        const y = Math.floor((event.clientY - frame.top) / this.zoom);
        if (x >= 0 && y >= 0 && x < this.width && y < this.height)
            this.point(x, y);
    }

    point(x, y) {
        this.moveCursor(x, y);
        this.listener.point(x, y);
    }

    moveCursor(x, y) {
        this.cursor = [Math.max(0, Math.min(this.width - 1, x)), Math.max(0, Math.min(this.height - 1, y))];
        this.drawCursor();
    }

    key(event) {
        if (event.ctrlKey || event.altKey || event.metaKey || this.width === 0)
            return;
        const far = event.shiftKey ? 10 : 1;
        const moves = {ArrowLeft: [-far, 0], ArrowRight: [far, 0], ArrowUp: [0, -far], ArrowDown: [0, far]};
        const cursor = this.cursor || [this.width >> 1, this.height >> 1];
        if (event.key in moves) {
            this.moveCursor(cursor[0] + moves[event.key][0], cursor[1] + moves[event.key][1]);
            this.revealBox([this.cursor[0], this.cursor[1], this.cursor[0] + 1, this.cursor[1] + 1]);
            announce('pixel ' + this.cursor[0] + ', ' + this.cursor[1]);
        } else if (event.key === 'Enter' || event.key === ' ') {
            this.point(cursor[0], cursor[1]);
        } else {
            return;
        }
        event.preventDefault();
        event.stopPropagation();
    }

    drawCursor() {
        const old = this.outlines.querySelector('.cursor');
        if (old)
            old.remove();
        if (!this.cursor)
            return;
        const [x, y] = this.cursor;
        const far = 14 / this.zoom;
        const near = 3 / this.zoom;
        const cross = 'M' + (x + 0.5 - far) + ' ' + (y + 0.5) + 'H' + (x + 0.5 - near) + 'M' + (x + 0.5 + near) + ' ' +
            (y + 0.5) + 'H' + (x + 0.5 + far) + 'M' + (x + 0.5) + ' ' + (y + 0.5 - far) + 'V' + (y + 0.5 - near) + 'M' +
            (x + 0.5) + ' ' + (y + 0.5 + near) + 'V' + (y + 0.5 + far);
        this.outlines.append(makeSvg('g', {class: 'cursor'},
            makeSvg('rect', {x, y, width: 1, height: 1}), makeSvg('path', {d: cross, class: 'under'}),
            makeSvg('path', {d: cross})));
    }

    /** Brings a box of the page into sight, unless a part of it is. */
    revealBox(box) {
        if (this.fitting || !box)
            return;
        const view = this.viewport;
        const left = box[0] * this.zoom + this.sheet.offsetLeft;
        const top = box[1] * this.zoom + this.sheet.offsetTop;
        const right = box[2] * this.zoom + this.sheet.offsetLeft;
        const bottom = box[3] * this.zoom + this.sheet.offsetTop;
        if (right < view.scrollLeft || left > view.scrollLeft + view.clientWidth)
            view.scrollLeft = (left + right - view.clientWidth) / 2;
        if (bottom < view.scrollTop || top > view.scrollTop + view.clientHeight)
            view.scrollTop = (top + bottom - view.clientHeight) / 2;
    }

    clearMarks() {
        this.marks.getContext('2d').clearRect(0, 0, this.width, this.height);
    }

    /** Outlines of what a call paints and of its clips, instead of those before. */
    outline(shapes, clips) {
        this.outlines.querySelectorAll('.outline').forEach(one => one.remove());
        for (const [kind, list] of [['clip', clips], ['shape', shapes]])
            for (const outline of list) {
                if (kind === 'shape' && outline.stroke > 2)
                    this.outlines.append(makeSvg('path', {
                        'class': 'outline shape band', 'd': outline.d, 'stroke-width': outline.stroke,
                    }));
                this.outlines.append(makeSvg('path', {
                    'class': 'outline ' + kind, 'd': outline.d, 'fill-rule': outline.rule,
                }));
            }
        this.drawCursor();
    }
}
