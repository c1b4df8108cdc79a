// What the list of calls shows: the calls of one log, or those of two, aligned.

const SAME = 0, CHANGED = 1, MISSING = 2, ADDED = 3;
const ITEM_KINDS = ['same', 'changed', 'missing in B', 'added in B'];

class Items {
    /**
     * @param {!Array<!LogModel>} logs one or two, loaded
     * @param {?Object} compare as the index has it
     */
    constructor(logs, compare) {
        this.logs = logs;
        this.compare = compare;
    }

    async load() {
        if (this.logs.length === 2 && this.compare)
            await this.loadRows();
        else
            this.useCalls();
        this.makeTree();
    }

    useCalls() {
        this.count = this.logs[0].count;
        this.kind = new Uint8Array(this.count);
        this.calls = [Int32Array.from({length: this.count}, (_, i) => i)];
        this.itemOf = this.calls.slice();
        this.differences = [];
    }

    async loadRows() {
        const blocks = this.compare.blocks;
        const lists = await Promise.all(blocks.map(block => blockJson(block.list)));
        const joined = name => lists.flatMap(list => list[name]);
        this.kind = Uint8Array.from(joined('kind'));
        this.count = this.kind.length;
        this.calls = [Int32Array.from(joined('a')), Int32Array.from(joined('b'))];
        this.moved = joined('moved');
        this.twice = joined('twice');
        this.detail = joined('differences');
        this.itemOf = this.logs.map(log => new Int32Array(log.count).fill(-1));
        this.differences = [];
        for (let item = 0; item < this.count; ++item) {
            for (const which of [0, 1])
                if (this.calls[which][item] >= 0)
                    this.itemOf[which][this.calls[which][item]] = item;
            if (this.kind[item] !== SAME)
                this.differences.push(item);
        }
    }

    /** Which log's call stands for an item, 0 or 1: the second's, if it has it. */
    which(item) {
        return this.calls.length === 2 && this.calls[1][item] >= 0 ? 1 : 0;
    }

    log(item) {
        return this.logs[this.which(item)];
    }

    call(item) {
        return this.calls[this.which(item)][item];
    }

    /** A row of two logs may be of a call that neither of the lists has. */
    isListed(item) {
        return this.call(item) >= 0;
    }

    makeTree() {
        this.parent = new Int32Array(this.count).fill(-1);
        const children = new Map([[-1, []]]);
        for (let item = 0; item < this.count; ++item) {
            if (!this.isListed(item))
                continue;
            const which = this.which(item);
            const above = this.logs[which].column.parent[this.call(item)];
            const parent = above >= 0 ? this.itemOf[which][above] : -1;
            // What stands ahead of its own beginning would never be reached.
            this.parent[item] = parent < item ? parent : -1;
            const row = children.get(this.parent[item]);
            if (row)
                row.push(item);
            else
                children.set(this.parent[item], [item]);
        }
        this.children = children;
        this.layOut();
    }

    /** The items as they stand in the tree, each ahead of what is below it. */
    layOut() {
        this.level = new Int32Array(this.count);
        this.place = new Int32Array(this.count);
        const order = [];
        const open = [[this.children.get(-1), 0]];
        while (open.length > 0) {
            const top = open[open.length - 1];
            if (top[1] === top[0].length) {
                open.pop();
                continue;
            }
            const item = top[0][top[1]++];
            this.level[item] = open.length - 1;
            this.place[item] = top[1];
            order.push(item);
            if (this.children.has(item))
                open.push([this.children.get(item), 0]);
        }
        this.order = Int32Array.from(order);
    }

    hasChildren(item) {
        return this.children.has(item);
    }

    placeAmong(item) {
        return [this.place[item], this.children.get(this.parent[item]).length];
    }
}
