// The sum that ends a chunk of a PNG.

const TABLE = Uint32Array.from({length: 256}, (_, byte) => {
    for (let bit = 0; bit < 8; ++bit)
        byte = byte & 1 ? 0xedb88320 ^ (byte >>> 1) : byte >>> 1;
    return byte;
});

export function crc32Of(bytes) {
    let sum = 0xffffffff;
    for (const byte of bytes)
        sum = TABLE[(sum ^ byte) & 255] ^ (sum >>> 8);
    return (sum ^ 0xffffffff) >>> 0;
}
