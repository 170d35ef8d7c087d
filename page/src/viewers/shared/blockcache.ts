export interface RangeSource {
    readonly size: number;
    range(start: number, length: number, signal?: AbortSignal): Promise<Uint8Array>;
}

/**
 * Keeps the blocks of a large file that were read last, so that scrolling back and forth asks for each of them once.
 */
export class BlockCache {
    readonly size: number;
    private readonly blocks = new Map<number, Promise<Uint8Array>>();

    constructor(
        private readonly source: RangeSource,
        private readonly signal?: AbortSignal,
        private readonly blockSize = 256 * 1024,
        private readonly capacity = 64,
    ) {
        this.size = source.size;
    }

    async read(start: number, end: number): Promise<Uint8Array> {
        const from = Math.max(0, start);
        const to = Math.min(this.size, end);
        if (to <= from) return new Uint8Array(0);
        const first = Math.floor(from / this.blockSize);
        const last = Math.floor((to - 1) / this.blockSize);
        const wanted: Promise<Uint8Array>[] = [];
        for (let index = first; index <= last; index++) wanted.push(this.block(index));
        const parts = await Promise.all(wanted);
        const out = new Uint8Array(to - from);
        parts.forEach((part, i) => {
            const partStart = (first + i) * this.blockSize;
            const a = Math.max(from, partStart);
            const b = Math.min(to, partStart + part.length);
            if (b > a) out.set(part.subarray(a - partStart, b - partStart), a - from);
        });
        return out;
    }

    private block(index: number): Promise<Uint8Array> {
        let entry = this.blocks.get(index);
        if (entry) {
            this.blocks.delete(index);
        } else {
            const start = index * this.blockSize;
            const length = Math.min(this.blockSize, this.size - start);
            entry = this.source.range(start, length, this.signal).then(bytes => {
                if (bytes.length !== length) throw new Error('The file became shorter while it was being read.');
                return bytes;
            });
            // A failed block is asked for again next time.
            entry.catch(() => this.blocks.delete(index));
        }
        this.blocks.set(index, entry);
        if (this.blocks.size > this.capacity) this.blocks.delete(this.blocks.keys().next().value as number);
        return entry;
    }
}
