// The slider that draws a page step by step, and the pictures of pages as they are in the end.

class StepBar {
    /**
     * @param {!PageView} view
     * @param {{stepped: function(number, number)}} listener is told the step, and the call that made it
     */
    constructor(view, listener) {
        this.view = view;
        this.listener = listener;
        this.slider = byId('step');
        this.player = null;
        this.steps = null;
        this.whole = true;
        this.pictures = [null, null];
        this.blend = 1;
        this.turn = 0;
        this.slider.addEventListener('input', () => this.show(Number(this.slider.value)));
        byId('step-before').addEventListener('click', () => this.move(-1));
        byId('step-behind').addEventListener('click', () => this.move(1));
        byId('whole').addEventListener('click', () => this.showWhole());
    }

    /**
     * Shows another page, as it is in the end.
     * @param {!Array<?Object>} pages of the first and of the second log, as the index has them
     * @param {number} which of the two has the steps that are walked through
     */
    async setPage(pages, which, stepsOf) {
        const turn = ++this.turn;
        this.pages = pages;
        const page = pages[which] || pages[0] || pages[1];
        this.view.setSize(page.width, page.height);
        const pictures = await Promise.all(pages.map(one => one && one.picture ? blockPicture(one.picture) : null));
        if (turn !== this.turn)
            return false;
        this.pictures = pictures;
        this.steps = null;
        this.player = null;
        this.whole = true;
        this.bar(page);
        this.drawWhole();
        if (page.steps) {
            const steps = await stepsOf(page).load();
            if (turn !== this.turn)
                return false;
            this.steps = steps;
            this.player = new StepPlayer(steps);
            this.slider.max = Math.max(0, steps.count - 1);
            this.slider.value = this.slider.max;
            this.tell();
        }
        return true;
    }

    bar(page) {
        const steps = page.steps && page.steps.count > 0;
        for (const id of ['step', 'step-before', 'step-behind', 'whole'])
            byId(id).disabled = !steps;
        byId('step-text').textContent = steps ? '' : 'no steps in this report';
    }

    /** Draws the pages as they are in the end, of two as much of the second as is asked for. */
    drawWhole() {
        const context = this.view.context();
        context.globalAlpha = 1;
        context.fillStyle = '#fff';
        context.fillRect(0, 0, this.view.width, this.view.height);
        const [first, second] = this.pictures;
        if (first)
            context.drawImage(first, 0, 0);
        if (second) {
            context.globalAlpha = first ? this.blend : 1;
            context.drawImage(second, 0, 0);
            context.globalAlpha = 1;
        }
        const note = first || second ? null : 'There is no picture of this page.';
        byId('no-page').hidden = note === null;
        byId('no-page').textContent = note || '';
    }

    setBlend(part) {
        this.blend = part;
        if (this.whole)
            this.drawWhole();
    }

    showWhole() {
        this.whole = true;
        this.slider.value = this.slider.max;
        this.drawWhole();
        this.tell();
    }

    move(by) {
        if (this.steps)
            this.show(Math.max(0, Math.min(this.steps.count - 1, Number(this.slider.value) + by)));
    }

    /** Shows the page behind a step. */
    async show(step, quiet) {
        if (!this.player)
            return;
        const player = this.player;
        this.whole = false;
        this.slider.value = step;
        this.tell();
        if (!quiet)
            this.listener.stepped(step, this.steps.table.call[step]);
        if (!await player.goTo(step) || player !== this.player || this.whole)
            return;
        player.draw(this.view.context(), first => this.listener.boxOf(this.steps.table.call[first]));
        this.view.viewport.dataset.step = step;
    }

    /** Follows to a call: the page behind its last step, if the page is shown step by step. */
    follow(call) {
        if (!this.steps)
            return;
        const step = Math.max(0, this.steps.stepBehind(call));
        if (!this.whole && step !== Number(this.slider.value))
            this.show(step, true);
    }

    tell() {
        byId('whole').setAttribute('aria-pressed', String(this.whole));
        if (!this.steps)
            return;
        const step = Number(this.slider.value);
        const text = this.whole ? 'whole page, ' + counted(this.steps.count, 'step') :
            'step ' + grouped(step + 1) + ' of ' + grouped(this.steps.count) + ': ' +
            this.listener.nameOf(this.steps.table.call[step]);
        byId('step-text').textContent = printable(text);
        this.slider.setAttribute('aria-valuetext', printable(text));
    }
}
