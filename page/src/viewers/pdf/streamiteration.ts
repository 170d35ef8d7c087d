/**
 * The PDF reader walks over streams with "for await", which this engine's streams do not offer yet, neither in pages
 * nor in workers.
 */
async function* walk(this: ReadableStream<unknown>) {
    const reader = this.getReader();
    try {
        for (let part = await reader.read(); !part.done; part = await reader.read()) yield part.value;
    } finally {
        // Leaving the loop early ends the stream too; a finished stream takes no notice.
        await reader.cancel().catch(() => undefined);
        reader.releaseLock();
    }
}

if (!(Symbol.asyncIterator in ReadableStream.prototype)) {
    Object.defineProperty(ReadableStream.prototype, Symbol.asyncIterator, {
        value: walk,
        configurable: true,
        writable: true,
    });
}

export {};
