import { PDFDataRangeTransport } from 'pdfjs-dist';
import type { RangeSource } from '../shared/blockcache';

export const PDF_CHUNK = 256 * 1024;

/** Hands the reader exactly the ranges it asks for; the library itself only does that over http. */
export class DocRangeTransport extends PDFDataRangeTransport {
    constructor(
        private readonly source: RangeSource,
        head: Uint8Array,
        private readonly signal: AbortSignal,
        private readonly onError: (error: Error) => void,
    ) {
        super(source.size, head);
    }

    override requestDataRange(begin: number, end: number): void {
        this.source.range(begin, end - begin, this.signal).then(
            chunk => !this.signal.aborted && this.onDataRange(begin, chunk),
            (error: unknown) =>
                !this.signal.aborted && this.onError(error instanceof Error ? error : new Error(String(error))),
        );
    }
}
