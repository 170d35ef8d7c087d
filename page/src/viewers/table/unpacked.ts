const END_OF_DIRECTORY = 0x06054b50;
const DIRECTORY_ENTRY = 0x02014b50;
const LONGEST_COMMENT = 65_557;

/** What a zip says it unpacks to, in bytes, by its directory; 0 for what is no zip. */
export function unpackedSize(bytes: Uint8Array): number {
    const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
    let end = bytes.length - 22;
    const first = Math.max(0, bytes.length - LONGEST_COMMENT);
    while (end >= first && view.getUint32(end, true) !== END_OF_DIRECTORY) end--;
    if (end < first) return 0;
    let total = 0;
    let at = view.getUint32(end + 16, true);
    while (at + 46 <= bytes.length && view.getUint32(at, true) === DIRECTORY_ENTRY) {
        total += view.getUint32(at + 24, true);
        at += 46 + view.getUint16(at + 28, true) + view.getUint16(at + 30, true) + view.getUint16(at + 32, true);
    }
    return total;
}
