// The report: what is chosen, and what each part of the page shows of it.

const PANEL_DELAY = 90;

class Report {
    constructor(index) {
        this.index = index;
        this.logs = index.logs.map(log => new LogModel(log));
        this.items = new Items(this.logs, index.compare);
        this.item = -1;
        this.blend = 1;
        this.stepsByPage = new Map();
        this.panelNames = index.compare ? ['difference', 'call', 'pixel', 'objects', 'figures'] :
            ['call', 'pixel', 'objects', 'figures'];
        this.describe();
        followLayout();
    }

    describe() {
        const names = this.index.logs.map(log => shortened(log.name, 120));
        byId('title').textContent = printable('Report of ' + names.join(' and '));
        byId('made-by').textContent = printable('Made by ' + this.index.program + ' ' + this.index.version + '. ' +
            this.index.logs.map(describeLog).join('; '));
    }

    async start() {
        await Promise.all(this.logs.map(log => log.load()));
        await this.items.load();
        this.preparePages();
        this.makeTabs();
        this.view = new PageView({point: (x, y) => this.point(x, y)});
        this.view.onMarks = () => this.mark();
        this.stepBar = new StepBar(this.view, {
            stepped: (step, call) => this.stepped(call),
            boxOf: call => call >= 0 ? this.logs[this.active()].column.box[call] : null,
            nameOf: call => call < 0 ? 'the page begins' : this.logs[this.active()].address(call) + ' ' +
                this.logs[this.active()].kind(call),
        });
        this.callsPane = new CallsPane(this.items, {
            choose: item => this.select(item, {fromTree: true}), page: () => this.pageNumber(),
        });
        this.prepareRooms();
        this.prepareCompare();
        showFindings(this);
        this.keys = new Keys(this);
        await this.showFirstPage();
        document.body.dataset.ready = 'true';
        this.preparePaper();
    }

    /** What is printed is made when there is time, or when it is wanted. */
    preparePaper() {
        const prepare = () => {
            if (!byId('paper').hasChildNodes())
                preparePaper(this);
        };
        window.addEventListener('beforeprint', prepare);
        if (window.requestIdleCallback)
            requestIdleCallback(prepare);
        else
            setTimeout(prepare, 500);
    }

    /** The pages that can be looked at: those of the first and of the second log beside one another. */
    preparePages() {
        const pairs = this.index.compare ? this.index.compare.pages.map(page => [page.a, page.b]) :
            this.index.logs[0].pages.map(page => [page.page]);
        this.pages = pairs.map(numbers => ({
            numbers, pages: numbers.map((number, which) => this.logs[which].pageOf.get(number) || null),
        }));
        if (this.index.compare && this.pages.length === 0)
            this.pages = this.pagesSideBySide();
        this.pages = this.pages.filter(page => page.pages.some(one => one !== null));
        const choice = byId('page-choice');
        replaceContent(choice, this.pages.map((page, index) => make('option', {value: index}, this.pageName(page))));
        choice.addEventListener('change', () => this.turnTo(Number(choice.value)));
        byId('page-before').addEventListener('click', () => this.turnTo(this.pageIndex - 1));
        byId('page-behind').addEventListener('click', () => this.turnTo(this.pageIndex + 1));
    }

    pagesSideBySide() {
        const numbers = new Set(this.logs.flatMap(log => Array.from(log.pageOf.keys())));
        return Array.from(numbers).sort((a, b) => a - b).map(number => ({
            numbers: [number, number], pages: this.logs.map(log => log.pageOf.get(number) || null),
        }));
    }

    pageName(page) {
        const [a, b] = page.numbers;
        const name = b === undefined || a === b ? 'Page ' + a : 'Page ' + (a || '\u2013') + ' / ' + (b || '\u2013');
        const compared = this.index.compare && this.index.compare.pages.find(one => one.a === a && one.b === b);
        return compared && !compared.same ? name + ' \u2260' : name;
    }

    async showFirstPage() {
        if (this.pages.length === 0) {
            byId('no-page').hidden = false;
            byId('no-page').textContent = 'This report has no pages.';
            for (const button of byId('page').querySelectorAll('button, select, input'))
                button.disabled = true;
            return;
        }
        const compare = this.index.compare;
        const differing = compare ? this.pages.findIndex(page => compare.pages.some(
            one => one.a === page.numbers[0] && one.b === page.numbers[1] && !one.same)) : 0;
        await this.showPage(Math.max(0, differing));
    }

    active() {
        return this.logs.length > 1 && this.page && (this.page.pages[1] === null ||
            (this.blend < 0.5 && this.page.pages[0] !== null)) ? 0 : this.logs.length - 1;
    }

    pageNumber() {
        return this.page ? this.page.numbers[this.active()] : 0;
    }

    stepsOf(page) {
        if (!this.stepsByPage.has(page))
            this.stepsByPage.set(page, new PageSteps(page.steps));
        return this.stepsByPage.get(page);
    }

    /** Shows another page, and where its calls begin. */
    turnTo(index) {
        const done = this.showPage(index);
        const page = this.page.pages[this.active()];
        const item = page ? this.items.itemOf[this.active()][page.call] : -1;
        if (item >= 0)
            this.callsPane.tree.bringUp(item);
        return done;
    }

    async showPage(index) {
        if (index < 0 || index >= this.pages.length)
            return;
        this.pageIndex = index;
        this.page = this.pages[index];
        byId('page-choice').value = index;
        byId('page-before').disabled = index === 0;
        byId('page-behind').disabled = index === this.pages.length - 1;
        this.view.viewport.setAttribute('aria-label', this.pageName(this.page));
        if (byId('filter-page').checked)
            this.callsPane.refresh();
        this.mask = undefined;
        this.view.clearMarks();
        this.view.outline([], []);
        const shown = await this.stepBar.setPage(this.page.pages, this.active(), page => this.stepsOf(page));
        if (shown)
            await this.mark();
    }

    /** Makes a call the current one. */
    select(item, options) {
        if (item < 0 || !this.items.isListed(item))
            return;
        const {fromTree, fromSteps, keepPanel} = options || {};
        this.item = item;
        if (!fromTree)
            this.callsPane.setCurrent(item);
        if (!keepPanel && !fromSteps)
            this.openPanel('call', false);
        clearTimeout(this.panelTimer);
        if (fromSteps)
            this.panelTimer = setTimeout(() => this.showCall(), PANEL_DELAY);
        else
            this.showCall();
        if (!fromSteps && this.items.which(item) === this.active())
            this.stepBar.follow(this.items.call(item));
    }

    selectCall(which, call, options) {
        const item = call >= 0 ? this.items.itemOf[which][call] : -1;
        this.select(item, options);
    }

    async showCall() {
        const item = this.item;
        this.callPanel.show(item);
        const log = this.items.log(item);
        const call = this.items.call(item);
        const number = log.pageFor(call);
        const index = this.pages.findIndex(page => page.numbers[this.items.which(item)] === number);
        if (index >= 0 && index !== this.pageIndex && log.column.page[call] > 0) {
            await this.showPage(index);
            if (item === this.item && this.items.which(item) === this.active())
                this.stepBar.follow(call);
        }
        await this.mark();
    }

    /** Outlines the current call, and marks what it changed and where pages differ. */
    async mark() {
        const turn = this.markTurn = (this.markTurn || 0) + 1;
        const page = this.page;
        const item = this.item;
        const outlines = await this.outlinesOnPage(item);
        const which = item >= 0 ? this.items.which(item) : 0;
        const own = page && page.pages[which];
        let changed = null;
        if (item >= 0 && own && own.steps && this.view.shown.changed)
            changed = await markChanged(this.view.marks.getContext('2d'), this.stepsOf(own), this.items.call(item),
                call => call >= 0 ? this.logs[which].column.box[call] : null);
        if (turn !== this.markTurn)
            return;
        this.view.clearMarks();
        if (page && page.pages.length > 1 && this.view.shown.difference)
            this.drawDifference();
        if (changed)
            changed();
        this.view.outline(outlines.shape, outlines.clip);
        if (item >= 0)
            this.view.revealBox(this.items.log(item).column.box[this.items.call(item)]);
        this.view.viewport.dataset.marked = item;
    }

    async outlinesOnPage(item) {
        const none = {shape: [], clip: []};
        if (item < 0 || !this.page)
            return none;
        const log = this.items.log(item);
        const call = this.items.call(item);
        const which = this.items.which(item);
        const number = this.page.numbers[which];
        if (log.column.page[call] === number)
            return log.outlines(call);
        const own = this.page.pages[which];
        if (log.column.page[call] > 0 || !own || !own.steps)
            return none;
        // A resource has units of its own: its calls are outlined by the boxes in which it is painted on the page.
        const steps = await this.stepsOf(own).load();
        const boxes = steps.paintedIn(call, around => log.column.page[around] === number).map(
            around => log.column.box[around]).filter(box => box);
        return {shape: boxes.map(([x0, y0, x1, y1]) => ({d: `M${x0},${y0}L${x1},${y0}L${x1},${y1}L${x0},${y1}Z`,
            rule: 'nonzero', stroke: null})), clip: []};
    }

    drawDifference() {
        if (this.mask === undefined)
            this.mask = differenceMask(this.stepBar.pictures[0], this.stepBar.pictures[1]);
        if (this.mask)
            this.view.marks.getContext('2d').drawImage(this.mask, 0, 0);
    }

    stepped(call) {
        this.selectCall(this.active(), call, {fromSteps: true});
    }

    toggleSteps() {
        if (!this.stepBar.steps)
            return;
        if (!this.stepBar.whole) {
            this.stepBar.showWhole();
            return;
        }
        const call = this.item >= 0 && this.items.which(this.item) === this.active() ? this.items.call(this.item) : -1;
        this.stepBar.show(call >= 0 ? Math.max(0, this.stepBar.steps.stepBehind(call)) : 0, call >= 0);
    }

    point(x, y) {
        this.openPanel('pixel', false);
        this.pixelPanel.show(x, y);
    }

    callLink(item) {
        const log = this.items.log(item);
        const call = this.items.call(item);
        return make('button', {type: 'button', class: 'link', onclick: () => this.select(item, {})},
            log.address(call) + ' ' + log.kind(call));
    }

    makeTabs() {
        const names = {difference: 'Differences', call: 'Call', pixel: 'Pixel', objects: 'Objects', figures: 'Figures'};
        const tabs = byId('tabs');
        for (const name of this.panelNames) {
            const tab = make('button', {'type': 'button', 'role': 'tab', 'id': 'tab-' + name, 'aria-controls': 'panel-' + name,
                'onclick': () => this.openPanel(name, false)}, names[name]);
            tabs.append(tab);
            byId('panels').append(make('div', {'role': 'tabpanel', 'id': 'panel-' + name, 'class': 'panel',
                'aria-labelledby': 'tab-' + name, 'tabindex': 0}));
        }
        tabs.addEventListener('keydown', event => this.tabKey(event));
        this.callPanel = new CallPanel(this, byId('panel-call'));
        this.pixelPanel = new PixelPanel(this, byId('panel-pixel'));
        this.objectsPanel = new ObjectsPanel(this, byId('panel-objects'));
        figuresPanel(this, byId('panel-figures'));
        if (this.index.compare)
            differencePanel(this, byId('panel-difference'));
        this.openPanel(this.panelNames[0], false, true);
    }

    tabKey(event) {
        const at = this.panelNames.findIndex(name => byId('tab-' + name).getAttribute('aria-selected') === 'true');
        const count = this.panelNames.length;
        const moves = {ArrowRight: at + 1, ArrowLeft: at + count - 1, Home: 0, End: count - 1};
        if (!(event.key in moves))
            return;
        event.preventDefault();
        const name = this.panelNames[moves[event.key] % count];
        this.openPanel(name, false);
        byId('tab-' + name).focus();
    }

    openPanel(name, focus, first) {
        for (const one of this.panelNames) {
            const chosen = one === name;
            byId('tab-' + one).setAttribute('aria-selected', String(chosen));
            byId('tab-' + one).tabIndex = chosen ? 0 : -1;
            byId('panel-' + one).hidden = !chosen;
        }
        if (name === 'objects')
            this.objectsPanel.start();
        if (focus) {
            this.showRoom('details');
            byId('panel-' + name).focus();
        } else if (!first) {
            byId('rooms').dataset.news = 'details';
        }
    }

    /** On small screens one part of the report is shown at a time. */
    showRoom(room) {
        byId('main').dataset.room = room;
        for (const button of byId('rooms').children)
            button.setAttribute('aria-pressed', String(button.dataset.room === room));
        if (room === byId('rooms').dataset.news)
            delete byId('rooms').dataset.news;
    }

    prepareRooms() {
        byId('rooms').addEventListener('click', event => {
            if (event.target.dataset.room)
                this.showRoom(event.target.dataset.room);
        });
        document.querySelector('.skip').addEventListener('click', () => this.showRoom('calls'));
    }

    prepareCompare() {
        const two = this.logs.length > 1;
        byId('compare').hidden = !two;
        byId('blend').addEventListener('input', () => this.setBlend(Number(byId('blend').value) / 100));
        byId('difference-before').addEventListener('click', () => this.jump(-1));
        byId('difference-behind').addEventListener('click', () => this.jump(1));
    }

    async setBlend(part) {
        const before = this.active();
        this.blend = part;
        byId('blend').value = Math.round(part * 100);
        byId('blend').setAttribute('aria-valuetext', part === 0 ? 'A' : part === 1 ? 'B' : Math.round(part * 100) + ' % B');
        this.stepBar.setBlend(part);
        if (this.page && this.active() !== before)
            await this.stepBar.setPage(this.page.pages, this.active(), page => this.stepsOf(page));
    }

    /** To the next call that differs, or to the one before. */
    jump(direction) {
        const list = this.items.differences.filter(item => this.items.isListed(item));
        if (list.length === 0) {
            announce('no call differs');
            return;
        }
        const next = direction > 0 ? list.find(item => item > this.item) : list.findLast(item => item < this.item);
        if (next === undefined) {
            announce(direction > 0 ? 'the last difference' : 'the first difference');
            if (this.item < 0 || !list.includes(this.item))
                this.select(direction > 0 ? list[0] : list[list.length - 1], {});
            return;
        }
        this.select(next, {});
    }
}

function describeLog(log) {
    return shortened(log.name, 300) + ', ' + log.form + ', ' + counted(log.bytes, 'byte') +
        (log.sha256 ? ', SHA-256 ' + log.sha256.slice(0, 16) + '\u2026' : '') + ', ' + counted(log.page_count, 'page') +
        ', ' + counted(log.calls.of, 'call');
}

function showFailure(error) {
    const text = error && error.message ? error.message : String(error);
    byId('findings').prepend(make('p', {class: 'failure', role: 'alert'}, 'The report can\u2019t be shown: ' + text));
}

window.addEventListener('unhandledrejection', event => showFailure(event.reason));
new Report(JSON.parse(byId('index').textContent)).start().catch(showFailure);
