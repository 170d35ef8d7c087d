import { BlockCache, type RangeSource } from '../shared/blockcache';

export type Encoding = 'utf-8' | 'utf-16le' | 'utf-16be' | 'windows-1252';

export interface Row {
    start: number;
    end: number;
    text: string;
    startsLine: boolean;
}

const BLOCK_MASK = 64 * 1024;
const WINDOW_MARGIN = 256 * 1024;

export function detectEncoding(head: Uint8Array): { encoding: Encoding; bom: number } {
    if (head[0] === 0xef && head[1] === 0xbb && head[2] === 0xbf) return { encoding: 'utf-8', bom: 3 };
    if (head[0] === 0xff && head[1] === 0xfe) return { encoding: 'utf-16le', bom: 2 };
    if (head[0] === 0xfe && head[1] === 0xff) return { encoding: 'utf-16be', bom: 2 };
    try {
        // The head may end inside a character; stream mode lets that pass.
        new TextDecoder('utf-8', { fatal: true }).decode(head, { stream: true });
        return { encoding: 'utf-8', bom: 0 };
    } catch {
        return { encoding: 'windows-1252', bom: 0 };
    }
}

/** Control characters would be invisible or move the text; their pictures stand in for them. */
function printable(text: string): string {
    return text.replace(/[\0-\x08\x0b-\x1f\x7f]/g, c =>
        c === '\x7f' ? '\u2421' : String.fromCharCode(0x2400 + c.charCodeAt(0)),
    );
}

/**
 * Cuts a file of any size into display rows without knowing what comes before.
 *
 * A row ends at a line feed or after `segment` bytes. In a line too long to look back through, rows are counted from
 * an anchor: a multiple of 64 KiB that has no line feed in the 64 KiB before it. So the row at a given place is the
 * same whichever way one came there, and finding it reads at most 128 KiB before it.
 */
export class TextRows {
    readonly size: number;
    readonly encoding: Encoding;
    readonly origin: number;
    segment = 4096;
    private readonly cache: BlockCache;
    private readonly unit: 1 | 2;
    private readonly decoder: TextDecoder;
    private base = 0;
    private window: Uint8Array = new Uint8Array(0);

    constructor(source: RangeSource, head: Uint8Array, signal?: AbortSignal) {
        this.size = source.size;
        this.cache = new BlockCache(source, signal);
        const { encoding, bom } = detectEncoding(head);
        this.encoding = encoding;
        this.origin = bom;
        this.unit = encoding.startsWith('utf-16') ? 2 : 1;
        this.decoder = new TextDecoder(encoding, { ignoreBOM: true });
    }

    async rowAt(offset: number): Promise<number> {
        const x = this.clamp(offset);
        await this.cover(x - 3 * BLOCK_MASK, x + this.segment + BLOCK_MASK + 8);
        return this.rowAtNow(x);
    }

    /** The start of the row that lies `count` rows away; stops at either end of the file. */
    async move(row: number, count: number): Promise<number> {
        let at = row;
        for (let i = 0; i < count; i++) {
            await this.cover(at - 2 * BLOCK_MASK, at + this.segment + BLOCK_MASK + 8);
            const next = this.nextNow(at);
            if (next >= this.size) break;
            at = next;
        }
        for (let i = 0; i > count && at > this.origin; i--) at = await this.rowAt(at - 1);
        return at;
    }

    async rows(from: number, count: number): Promise<Row[]> {
        const out: Row[] = [];
        for (let at = from; out.length < count && at < this.size; ) {
            await this.cover(at - 2 * BLOCK_MASK, at + this.segment + BLOCK_MASK + 8);
            const end = this.nextNow(at);
            out.push({
                start: at,
                end,
                text: this.textNow(at, end),
                startsLine: at === this.origin || this.isNewlineEnd(at),
            });
            at = end;
        }
        return out;
    }

    /** How many characters of a row lie before a byte inside it. */
    async columnOf(row: number, offset: number): Promise<number> {
        await this.cover(row, offset);
        return this.textNow(row, offset).length;
    }

    async newlinesBetween(start: number, end: number): Promise<number> {
        return countNewlines(await this.cache.read(start, end), start, this.unit, this.encoding);
    }

    countNewlinesIn(bytes: Uint8Array, start: number): number {
        return countNewlines(bytes, start, this.unit, this.encoding);
    }

    private clamp(offset: number): number {
        const x = Math.max(this.origin, Math.min(offset, this.size - 1));
        return this.unit === 2 ? x - (x % 2) : x;
    }

    private async cover(start: number, end: number): Promise<void> {
        const from = Math.max(0, start);
        const to = Math.min(this.size, end);
        if (from >= this.base && to <= this.base + this.window.length) return;
        const base = Math.max(0, from - WINDOW_MARGIN);
        this.window = await this.cache.read(base, to + WINDOW_MARGIN);
        this.base = base;
    }

    private byte(at: number): number {
        return this.window[at - this.base] ?? 0;
    }

    private isNewlineAt(at: number): boolean {
        if (this.unit === 1) return this.byte(at) === 10;
        const [low, high] =
            this.encoding === 'utf-16le' ? [this.byte(at), this.byte(at + 1)] : [this.byte(at + 1), this.byte(at)];
        return low === 10 && high === 0;
    }

    private isNewlineEnd(at: number): boolean {
        return at - this.unit >= this.origin && this.isNewlineAt(at - this.unit);
    }

    /** The last line feed that starts in [from, to), or -1. */
    private lastNewline(from: number, to: number): number {
        const low = Math.max(from, this.origin);
        if (this.unit === 1) {
            if (to <= low) return -1;
            const found = this.window.subarray(low - this.base, to - this.base).lastIndexOf(10);
            return found >= 0 ? found + low : -1;
        }
        for (let at = to - 2; at >= low; at -= 2) if (this.isNewlineAt(at)) return at;
        return -1;
    }

    private firstNewline(from: number, to: number): number {
        const high = Math.min(to, this.size);
        if (this.unit === 1) {
            const found = this.window.subarray(from - this.base, high - this.base).indexOf(10);
            return found >= 0 ? found + from : -1;
        }
        for (let at = from; at + 1 < high; at += 2) if (this.isNewlineAt(at)) return at;
        return -1;
    }

    /** Moves back to the start of the character that the byte belongs to. */
    private characterStart(at: number): number {
        if (at >= this.size) return this.size;
        if (this.encoding === 'windows-1252') return at;
        if (this.unit === 2) {
            const even = at - (at % 2);
            const high = this.encoding === 'utf-16le' ? this.byte(even + 1) : this.byte(even);
            return (high & 0xfc) === 0xdc && even - 2 >= this.origin ? even - 2 : even;
        }
        let start = at;
        while (at - start < 3 && start > this.origin && (this.byte(start) & 0xc0) === 0x80) start--;
        return (this.byte(start) & 0xc0) === 0x80 ? at : start;
    }

    private rowAtNow(x: number): number {
        const block = Math.floor(x / BLOCK_MASK) * BLOCK_MASK;
        const near = this.lastNewline(block, x);
        let row: number;
        if (near >= 0) {
            row = near + this.unit;
        } else {
            const before = this.lastNewline(block - BLOCK_MASK, block);
            const anchored = block - BLOCK_MASK >= this.origin;
            row = before >= 0 ? before + this.unit : anchored ? this.characterStart(block) : this.origin;
        }
        for (;;) {
            const next = this.nextNow(row);
            if (next > x || next >= this.size) return row;
            row = next;
        }
    }

    private nextNow(row: number): number {
        let end = Math.min(row + this.segment, this.size);
        const newline = this.firstNewline(row, end);
        if (newline >= 0) return Math.min(newline + this.unit, this.size);
        if (end < this.size) {
            const whole = this.characterStart(end);
            if (whole > row) end = whole;
        }
        for (
            let block = (Math.floor(row / BLOCK_MASK) + 1) * BLOCK_MASK;
            block <= end + 3 && block < this.size;
            block += BLOCK_MASK
        ) {
            const anchor = this.characterStart(block);
            if (anchor <= row || anchor >= end || block - BLOCK_MASK < this.origin) continue;
            if (this.lastNewline(block - BLOCK_MASK, block) < 0) return anchor;
        }
        return end;
    }

    private textNow(start: number, end: number): string {
        let to = end;
        if (to > start && this.isNewlineEnd(to)) to -= this.unit;
        const text = this.decoder.decode(this.window.subarray(start - this.base, to - this.base));
        return printable(text.endsWith('\r') ? text.slice(0, -1) : text);
    }
}

function countNewlines(bytes: Uint8Array, start: number, unit: 1 | 2, encoding: Encoding): number {
    let count = 0;
    if (unit === 1) {
        for (let i = 0; i < bytes.length; i++) if (bytes[i] === 10) count++;
        return count;
    }
    const low = encoding === 'utf-16le' ? 0 : 1;
    for (let i = start % 2; i + 1 < bytes.length; i += 2)
        if (bytes[i + low] === 10 && bytes[i + 1 - low] === 0) count++;
    return count;
}
