import type { RangeSource } from '../shared/blockcache';
import type { Encoding } from './textrows';

export interface Needle {
    bytes: Uint8Array;
    foldCase: boolean;
}

const CHUNK_SIZE = 4 * 1024 * 1024;

/** Letters outside ASCII have no single-byte case pairs in every encoding, so those are looked for exactly as typed. */
export function makeNeedle(query: string, encoding: Encoding): Needle {
    const ascii = /^[\0-\x7f]*$/.test(query);
    let bytes: Uint8Array;
    if (encoding === 'utf-8') {
        bytes = new TextEncoder().encode(query);
    } else if (encoding === 'windows-1252') {
        bytes = Uint8Array.from(query, c => windows1252Byte(c));
    } else {
        bytes = new Uint8Array(query.length * 2);
        const view = new DataView(bytes.buffer);
        for (let i = 0; i < query.length; i++) view.setUint16(i * 2, query.charCodeAt(i), encoding === 'utf-16le');
    }
    return { bytes, foldCase: ascii };
}

function windows1252Byte(character: string): number {
    const code = character.charCodeAt(0);
    if (code < 0x80) return code;
    const decoder = new TextDecoder('windows-1252');
    for (let byte = 0x80; byte < 0x100; byte++) if (decoder.decode(Uint8Array.of(byte)) === character) return byte;
    return 0;
}

/** One character for every byte, so that positions in the string are positions in the file. */
function asCharacters(bytes: Uint8Array, foldCase: boolean): string {
    const text = new TextDecoder('windows-1252').decode(bytes);
    return foldCase ? text.toLowerCase() : text;
}

export interface SearchOptions {
    from: number;
    direction: 'forward' | 'backward';
    signal: AbortSignal;
    progress?(done: number): void;
}

/**
 * Finds the nearest match at or after `from` (forward) or starting before it (backward), reading the file in pieces
 * that overlap by the length of the needle. Does not wrap. Returns the match's offset or -1.
 */
export async function findBytes(
    source: RangeSource,
    needle: Needle,
    options: SearchOptions,
    pieceSize = CHUNK_SIZE,
): Promise<number> {
    const length = needle.bytes.length;
    if (length === 0) return -1;
    const wanted = asCharacters(needle.bytes, needle.foldCase);
    const step = Math.max(pieceSize, length * 2);
    if (options.direction === 'forward') {
        for (let at = Math.max(0, options.from); at + length <= source.size; at += step) {
            options.signal.throwIfAborted();
            const piece = await source.range(at, Math.min(step + length - 1, source.size - at), options.signal);
            const found = asCharacters(piece, needle.foldCase).indexOf(wanted);
            if (found >= 0) return at + found;
            options.progress?.(Math.min(at + step, source.size));
        }
        return -1;
    }
    for (let end = Math.min(options.from, source.size); end > 0; end -= step) {
        options.signal.throwIfAborted();
        const start = Math.max(0, end - step);
        const piece = await source.range(start, Math.min(end + length - 1, source.size) - start, options.signal);
        const found = asCharacters(piece, needle.foldCase).lastIndexOf(wanted);
        if (found >= 0) return start + found;
        options.progress?.(start);
    }
    return -1;
}
