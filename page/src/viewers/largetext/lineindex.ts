import type { RangeSource } from '../shared/blockcache';

const BLOCK_SIZE = 1024 * 1024;

/**
 * Counts line feeds block by block from the start of the file, so that a place far inside gets a line number once
 * the count has passed it.
 */
export class LineIndex {
    /** before[i]: line feeds in front of block i */
    private readonly before: number[] = [0];

    constructor(
        private readonly source: RangeSource,
        private readonly countIn: (bytes: Uint8Array, start: number) => number,
    ) {}

    get counted(): number {
        return Math.min((this.before.length - 1) * BLOCK_SIZE, this.source.size);
    }

    get complete(): boolean {
        return this.counted >= this.source.size;
    }

    /** One-based; undefined where the count has not arrived yet. */
    async lineAt(offset: number): Promise<number | undefined> {
        const block = Math.floor(offset / BLOCK_SIZE);
        const lines = this.before[block];
        if (lines === undefined) return undefined;
        const start = block * BLOCK_SIZE;
        return lines + this.countIn(await this.source.range(start, offset - start), start) + 1;
    }

    get newlines(): number {
        return this.before[this.before.length - 1] as number;
    }

    async run(signal: AbortSignal, progress: () => void, blocksPerRead = 4): Promise<void> {
        while (!this.complete && !signal.aborted) {
            const start = this.counted;
            const bytes = await this.source.range(
                start,
                Math.min(BLOCK_SIZE * blocksPerRead, this.source.size - start),
                signal,
            );
            if (bytes.length === 0) throw new Error('The file became shorter while it was being read.');
            for (let at = 0; at < bytes.length; at += BLOCK_SIZE) {
                this.before.push(this.newlines + this.countIn(bytes.subarray(at, at + BLOCK_SIZE), start + at));
            }
            progress();
        }
    }
}
