'use strict';

// Building what is on the page. All that comes from a log goes in as text or as an attribute's value, never as markup.

const SVG_NAMESPACE = 'http://www.w3.org/2000/svg';

/**
 * An element with attributes and content. An attribute that is null, undefined or false is left out; a function under
 * a name that begins with "on" listens to that event.
 * @param {string} name
 * @param {Object<string, *>=} attributes
 * @param {...(Node|string|number|null|undefined)} content
 * @return {HTMLElement}
 */
function make(name, attributes, ...content) {
    return fill(document.createElement(name), attributes, content);
}

/** The same for an element of a drawing. */
function makeSvg(name, attributes, ...content) {
    return fill(document.createElementNS(SVG_NAMESPACE, name), attributes, content);
}

function fill(element, attributes, content) {
    for (const [key, value] of Object.entries(attributes || {})) {
        if (value === null || value === undefined || value === false)
            continue;
        if (typeof value === 'function')
            element.addEventListener(key.slice(2), value);
        else
            element.setAttribute(key, value === true ? '' : String(value));
    }
    for (const part of content.flat(Infinity))
        if (part !== null && part !== undefined)
            element.append(part instanceof Node ? part : printable(String(part)));
    return element;
}

/** @return {HTMLElement} the element of the page that has this id. */
function byId(id) {
    return document.getElementById(id);
}

function replaceContent(element, ...content) {
    element.replaceChildren(...content.flat(Infinity).filter(part => part !== null && part !== undefined));
}

// Characters that would hide, reorder or break what stands around them: controls, and those that turn the direction
// of writing.
const UNPRINTABLE = /[\u0000-\u0008\u000b-\u001f\u007f-\u009f\u061c\u200b-\u200f\u2028-\u202e\u2060-\u2069\ufeff\ufff9-\ufffb]/g;

/** Text with a stand-in for each character that isn't to be seen or would change the order of its neighbours. */
function printable(text) {
    return text.replace(UNPRINTABLE, character => {
        const code = character.charCodeAt(0);
        if (code < 0x20)
            return String.fromCharCode(0x2400 + code);
        return code === 0x7f ? '\u2421' : '\u27e8U+' + code.toString(16).toUpperCase().padStart(4, '0') + '\u27e9';
    });
}

/** Text cut to at most so many characters, with an ellipsis for the rest. */
function shortened(text, most) {
    return text.length <= most ? text : text.slice(0, most - 1) + '\u2026';
}

/** Says something to who listens to the page instead of looking at it. */
function announce(text) {
    byId('announcements').textContent = printable(shortened(text, 300));
}

/** A number with its digits in groups of three, the same everywhere. */
function grouped(number) {
    return String(number).replace(/\B(?=(\d{3})+$)/g, '\u202f');
}

/** "1 call", "2 calls". */
function counted(number, one, many) {
    return grouped(number) + ' ' + (number === 1 ? one : many || one + 's');
}
