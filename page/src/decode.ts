export interface DecodedText {
    text: string;
    /** Name for the status line: "UTF-8", "UTF-16 LE", "UTF-16 BE" or "Windows-1252". */
    encoding: string;
}

const MARKS: { mark: number[]; label: string; encoding: string }[] = [
    { mark: [0xef, 0xbb, 0xbf], label: 'utf-8', encoding: 'UTF-8' },
    { mark: [0xff, 0xfe], label: 'utf-16le', encoding: 'UTF-16 LE' },
    { mark: [0xfe, 0xff], label: 'utf-16be', encoding: 'UTF-16 BE' },
];

/** Decodes by byte order mark, else as UTF-8 when every byte fits, else as Windows-1252, which accepts anything. */
export function decodeText(bytes: Uint8Array): DecodedText {
    const marked = MARKS.find(({ mark }) => mark.every((byte, i) => bytes[i] === byte));
    if (marked) return { text: new TextDecoder(marked.label).decode(bytes), encoding: marked.encoding };
    try {
        return { text: new TextDecoder('utf-8', { fatal: true }).decode(bytes), encoding: 'UTF-8' };
    } catch {
        return { text: new TextDecoder('windows-1252').decode(bytes), encoding: 'Windows-1252' };
    }
}

/**
 * Whether the head of a file reads as text: a byte order mark, or no control bytes but the usual white space.
 * Bytes above 0x7f are fine in valid UTF-8 (a sequence cut off by the end of the head included) or, if few, in a legacy
 * encoding.
 */
export function looksLikeText(head: Uint8Array): boolean {
    if (MARKS.some(({ mark }) => mark.every((byte, i) => head[i] === byte))) return true;
    let high = 0;
    for (const byte of head) {
        if (byte < 0x20 && !(byte >= 0x08 && byte <= 0x0d) && byte !== 0x1b) return false;
        if (byte === 0x7f) return false;
        if (byte > 0x7f) high++;
    }
    try {
        new TextDecoder('utf-8', { fatal: true }).decode(head, { stream: true });
        return true;
    } catch {
        return high < head.length * 0.3;
    }
}
