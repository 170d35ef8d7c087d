import { analyse } from 'chardet';

export interface DecodedText {
    text: string;
    /** Name for the status line: "UTF-8", "Shift JIS", … */
    encoding: string;
}

export interface Encoding {
    /** As the engine's decoder calls it. */
    label: string;
    name: string;
}

/** Encodings that can be chosen; the detector's answers are among them. */
export const ENCODINGS: readonly Encoding[] = [
    { label: 'utf-8', name: 'UTF-8' },
    { label: 'utf-16le', name: 'UTF-16 LE' },
    { label: 'utf-16be', name: 'UTF-16 BE' },
    { label: 'windows-1252', name: 'Windows-1252' },
    { label: 'windows-1250', name: 'Windows-1250' },
    { label: 'windows-1251', name: 'Windows-1251' },
    { label: 'windows-1253', name: 'Windows-1253' },
    { label: 'windows-1254', name: 'Windows-1254' },
    { label: 'windows-1255', name: 'Windows-1255' },
    { label: 'windows-1256', name: 'Windows-1256' },
    { label: 'iso-8859-2', name: 'ISO 8859-2' },
    { label: 'iso-8859-5', name: 'ISO 8859-5' },
    { label: 'iso-8859-7', name: 'ISO 8859-7' },
    { label: 'iso-8859-9', name: 'ISO 8859-9' },
    { label: 'koi8-r', name: 'KOI8-R' },
    { label: 'shift_jis', name: 'Shift JIS' },
    { label: 'euc-jp', name: 'EUC-JP' },
    { label: 'iso-2022-jp', name: 'ISO 2022-JP' },
    { label: 'gb18030', name: 'GBK' },
    { label: 'big5', name: 'Big5' },
    { label: 'euc-kr', name: 'EUC-KR' },
];

const UTF_8 = ENCODINGS[0]!;
const FALLBACK = ENCODINGS[3]!;
const MARKS: { mark: number[]; label: string }[] = [
    { mark: [0xef, 0xbb, 0xbf], label: 'utf-8' },
    { mark: [0xff, 0xfe], label: 'utf-16le' },
    { mark: [0xfe, 0xff], label: 'utf-16be' },
];
// Enough for the detector to be sure, little enough not to be felt.
const SAMPLE = 64 * 1024;
// Below this the detector guesses at letters that the common encoding of Western Europe has as well.
const SURE = 20;

export const encodingOf = (label: string): Encoding => ENCODINGS.find(known => known.label === label) ?? FALLBACK;

/** The byte order mark at the head: its encoding and its length. */
export function markOf(head: Uint8Array): { label: string; length: number } | undefined {
    const found = MARKS.find(({ mark }) => mark.every((byte, i) => head[i] === byte));
    return found && { label: found.label, length: found.mark.length };
}

function isUtf8(bytes: Uint8Array, whole: boolean): boolean {
    try {
        new TextDecoder('utf-8', { fatal: true }).decode(bytes, { stream: !whole });
        return true;
    } catch {
        return false;
    }
}

/** UTF-16 without a mark shows in the zero bytes of its Latin letters, digits, blanks and line ends. */
function unmarkedUtf16(head: Uint8Array): string | undefined {
    const length = Math.min(head.length, 4096) & ~1;
    if (length < 4) return undefined;
    let even = 0,
        odd = 0,
        control = 0;
    for (let i = 0; i < length; i += 2) {
        const [first = 0, second = 0] = [head[i], head[i + 1]];
        if (first === 0) even++;
        if (second === 0) odd++;
        const low = even > odd ? second : first,
            high = even > odd ? first : second;
        if (high === 0 && low < 0x20 && !(low >= 0x09 && low <= 0x0d)) control++;
    }
    const pairs = length / 2;
    if (control > pairs * 0.02) return undefined;
    if (odd > pairs * 0.05 && even <= odd * 0.05) return 'utf-16le';
    if (even > pairs * 0.05 && odd <= even * 0.05) return 'utf-16be';
    return undefined;
}

function detected(sample: Uint8Array): Encoding {
    const high = sample.reduce((count, byte) => count + (byte > 0x7f ? 1 : 0), 0);
    for (const { name, confidence } of analyse(sample)) {
        const label = name.toLowerCase().replace('iso-8859-1', 'windows-1252');
        const known = ENCODINGS.find(encoding => encoding.label === label);
        if (!known || label.startsWith('utf')) continue;
        // A handful of letters beyond ASCII is no evidence for anything rare.
        if (confidence >= SURE && high >= 4) return known;
    }
    return FALLBACK;
}

/** The encoding of a text by its head; `whole` when the head is the whole text. */
export function detectEncoding(head: Uint8Array, whole: boolean): Encoding {
    const mark = markOf(head);
    if (mark) return encodingOf(mark.label);
    const wide = unmarkedUtf16(head);
    if (wide) return encodingOf(wide);
    if (isUtf8(head, whole)) return UTF_8;
    return detected(head.subarray(0, SAMPLE));
}

/** Decodes as `label` says, or as the bytes suggest: mark, UTF-16, UTF-8, then by the frequency of letters. */
export function decodeText(bytes: Uint8Array, label?: string): DecodedText {
    const { label: chosen, name } = label ? encodingOf(label) : detectEncoding(bytes, true);
    return { text: new TextDecoder(chosen).decode(bytes), encoding: name };
}

/**
 * Whether the head of a file reads as text: a byte order mark, UTF-16, or no control bytes but the usual white space.
 * Bytes above 0x7f are fine in valid UTF-8 (a sequence cut off by the end of the head included), in an encoding that the
 * detector is sure of or, if few, in any legacy encoding.
 */
export function looksLikeText(head: Uint8Array): boolean {
    if (markOf(head) || unmarkedUtf16(head)) return true;
    let high = 0;
    for (const byte of head) {
        if (byte < 0x20 && !(byte >= 0x08 && byte <= 0x0d) && byte !== 0x1b) return false;
        if (byte === 0x7f) return false;
        if (byte > 0x7f) high++;
    }
    if (isUtf8(head, false) || high < head.length * 0.3) return true;
    return isDense(head);
}

const DENSE = new Set(['shift_jis', 'euc-jp', 'gb18030', 'big5', 'euc-kr', 'koi8-r', 'windows-1251', 'iso-8859-5']);

/** Scripts without Latin letters are nearly all high bytes; compressed data is too, but breaks the rules of every such encoding. */
function isDense(head: Uint8Array): boolean {
    const { label } = detected(head);
    if (!DENSE.has(label) || head.length < 32) return false;
    const text = new TextDecoder(label).decode(head.subarray(0, head.length & ~1));
    const letters = [...text].filter(character => /[\p{L}\p{N}\p{P}\s]/u.test(character)).length;
    return letters > text.length * 0.95;
}
