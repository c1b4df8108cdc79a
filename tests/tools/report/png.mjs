// Writing PNG files.

import {deflateSync} from 'node:zlib';

const TABLE = Uint32Array.from({length: 256}, (_, byte) => {
    for (let bit = 0; bit < 8; ++bit)
        byte = byte & 1 ? 0xedb88320 ^ (byte >>> 1) : byte >>> 1;
    return byte;
});

function crc32Of(bytes) {
    let sum = 0xffffffff;
    for (const byte of bytes)
        sum = TABLE[(sum ^ byte) & 255] ^ (sum >>> 8);
    return (sum ^ 0xffffffff) >>> 0;
}

function chunk(type, data) {
    const head = Buffer.alloc(4);
    head.writeUInt32BE(data.length);
    const body = Buffer.concat([Buffer.from(type), data]);
    const sum = Buffer.alloc(4);
    sum.writeUInt32BE(crc32Of(body));
    return Buffer.concat([head, body, sum]);
}

/**
 * A PNG of eight bits.
 * @param {number} kind 6 for red, green, blue and alpha, 3 for places in the palette
 * @param {!Array<number>} palette red, green, blue and so on, of kind 3
 * @param {!Buffer} rows each with a byte 0 ahead of it
 */
export function pngFile(width, height, kind, palette, rows) {
    const head = Buffer.alloc(13);
    head.writeUInt32BE(width, 0);
    head.writeUInt32BE(height, 4);
    head.set([8, kind, 0, 0, 0], 8);
    return Buffer.concat([Buffer.from([137, 80, 78, 71, 13, 10, 26, 10]), chunk('IHDR', head),
        ...(palette.length > 0 ? [chunk('PLTE', Buffer.from(palette))] : []),
        chunk('IDAT', deflateSync(rows, {level: 9})), chunk('IEND', Buffer.alloc(0))]);
}
