// The record of a call, as the log has it, taken apart for tables.

const TAG = /^(\s*)<(\/?)([A-Za-z_][\w.:-]*)((?:\s+[\w.:-]+="[^"]*")*)\s*(\/?)>\s*$/;
const ATTRIBUTE = /([\w.:-]+)="([^"]*)"/g;

/**
 * One row for each attribute, and for each element and line of data without any.
 * @return {!Array<{path: string, level: number, element: string, first: boolean, name: string, value: string}>}
 *     `path` are the elements below the call, numbered where several of a name stand in the same one
 */
function recordRows(text) {
    const root = parseRecord(text);
    const rows = [];
    for (const call of root.children)
        addRows(rows, call, '', 0);
    return rows;
}

function parseRecord(text) {
    const root = {name: '', attributes: [], lines: [], children: []};
    const open = [root];
    for (const line of text.split('\n')) {
        const top = open[open.length - 1];
        const tag = TAG.exec(line);
        if (!tag) {
            if (line.trim() !== '')
                top.lines.push(line.trim());
        } else if (tag[2]) {
            if (open.length > 1)
                open.pop();
        } else {
            const attributes = Array.from(tag[4].matchAll(ATTRIBUTE), found => [found[1], unescaped(found[2])]);
            const element = {name: tag[3], attributes, lines: [], children: []};
            top.children.push(element);
            if (!tag[5])
                open.push(element);
        }
    }
    return root;
}

function unescaped(value) {
    const names = {lt: '<', gt: '>', quot: '"', apos: "'", amp: '&'};
    return value.replace(/&(lt|gt|quot|apos|amp);/g, (_, name) => names[name]);
}

function addRows(rows, element, path, level) {
    const row = (first, name, value) => rows.push({path, level, element: element.name, first, name, value});
    element.attributes.forEach(([name, value], index) => row(index === 0, name, value));
    if (element.attributes.length === 0)
        row(true, '', '');
    for (const line of element.lines)
        row(false, '', line);
    const count = new Map();
    for (const child of element.children)
        count.set(child.name, (count.get(child.name) || 0) + 1);
    const seen = new Map();
    for (const child of element.children) {
        seen.set(child.name, (seen.get(child.name) || 0) + 1);
        const step = count.get(child.name) > 1 ? child.name + '[' + seen.get(child.name) + ']' : child.name;
        addRows(rows, child, path === '' ? step : path + '/' + step, level + 1);
    }
}
