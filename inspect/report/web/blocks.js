// Reading the blocks of data that stand in the file.

const blockCache = new Map();
const BYTES_KEPT = 384 << 20;
let bytesKept = 0;

/** @return {string} the block's base64, in one line. */
function blockText(name) {
    const element = byId(name);
    if (!element)
        throw new Error('the report lacks its block ' + name);
    return element.textContent;
}

function decodeBase64(text) {
    if (Uint8Array.fromBase64)
        return Uint8Array.fromBase64(text);
    const binary = atob(text);
    const bytes = new Uint8Array(binary.length);
    for (let i = 0; i < binary.length; ++i)
        bytes[i] = binary.charCodeAt(i);
    return bytes;
}

async function readBlock(name) {
    const bytes = decodeBase64(blockText(name));
    if (byId(name).dataset.coding !== 'deflate')
        return bytes;
    const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream('deflate'));
    return new Uint8Array(await new Response(stream).arrayBuffer());
}

/**
 * Something made of the bytes of a block, kept for the next time as far as there is room.
 * @param {string} name
 * @param {string} form names what is made, for blocks that are read in several ways
 * @param {function(!Uint8Array): T} convert
 * @return {!Promise<T>}
 * @template T
 */
function keptBlock(name, form, convert) {
    const key = form + ' ' + name;
    const kept = blockCache.get(key);
    if (kept) {
        blockCache.delete(key);
        blockCache.set(key, kept);
        return kept.value;
    }
    const entry = {bytes: 0, value: null};
    entry.value = readBlock(name).then(bytes => {
        entry.bytes = bytes.length;
        bytesKept += bytes.length;
        dropBlocks(key);
        return convert(bytes);
    });
    blockCache.set(key, entry);
    return entry.value;
}

function dropBlocks(but) {
    for (const [key, entry] of blockCache) {
        if (bytesKept <= BYTES_KEPT)
            return;
        if (key === but || entry.bytes === 0)
            continue;
        blockCache.delete(key);
        bytesKept -= entry.bytes;
    }
}

function blockBytes(name) {
    return keptBlock(name, 'bytes', bytes => bytes);
}

function blockJson(name) {
    return keptBlock(name, 'json', bytes => JSON.parse(new TextDecoder().decode(bytes)));
}

/** The address under which a picture of the file can be shown; the picture isn't held twice. */
function pictureAddress(name) {
    return 'data:image/png;base64,' + blockText(name);
}

/** @return {!Promise<!ImageBitmap>} with colours as they stand in the file. */
async function blockPicture(name) {
    const bytes = await readBlock(name);
    return createImageBitmap(new Blob([bytes], {type: 'image/png'}), {colorSpaceConversion: 'none'});
}
