import { afterEach, describe, expect, it, vi } from 'vitest';
import { makeDoc } from './doc';

const MB = 1024 * 1024;
const file = Uint8Array.from({ length: 5 * MB + 5 }, (_, i) => (i * 31 + (i >> 10)) & 255);
const doc = makeDoc({
    url: '/__file/t/a.bin',
    name: 'a.bin',
    ext: 'bin',
    originalExt: 'bin',
    size: file.length,
    requestId: 1,
});

// The runner's own comparison takes minutes for so many numbers.
const same = (a: Uint8Array, b: Uint8Array) => a.length === b.length && a.every((byte, i) => byte === b[i]);

type Done = (count: number) => void;

/** A platform whose reads `answer` with a count; the bytes that it counts are in the buffer then. */
function platform(answer: (offset: number, length: number) => number | undefined) {
    const read = vi.fn((_url: string, offset: number, length: number, buffer: ArrayBuffer, done: Done) => {
        const count = answer(offset, length);
        if (count === undefined) return;
        new Uint8Array(buffer).set(file.subarray(offset, offset + Math.max(0, count)));
        queueMicrotask(() => done(count));
    });
    vi.stubGlobal('quillMereRead', read);
    return read;
}

function scheme() {
    const fetched = vi.fn(async (_url: string, options: { headers: { Range: string } }) => {
        const [from = 0, to = 0] = options.headers.Range.replace('bytes=', '').split('-').map(Number);
        return new Response(file.slice(from, to + 1), { status: 206 });
    });
    vi.stubGlobal('fetch', fetched);
    return fetched;
}

vi.stubGlobal('location', { href: 'quillmere://app/index.html' });

describe('a range of a document', () => {
    afterEach(() => {
        vi.unstubAllGlobals();
        vi.stubGlobal('location', { href: 'quillmere://app/index.html' });
    });

    it.each([
        ['the platform gives all', (_: number, length: number) => length, 0],
        ['the platform refuses', () => -1, 1],
        ['the file is short on the platform’s road', (_: number, length: number) => length - 1, 1],
        ['the platform has nothing', () => 0, 1],
        ['the platform fails half way', (offset: number, length: number) => (offset < 4 * MB ? length : -1), 1],
    ])('is whole when %s', async (_name, answer, fetches) => {
        const read = platform(answer);
        const fetched = scheme();
        expect(same(await doc.range(0, file.length), file)).toBe(true);
        expect(read).toHaveBeenCalled();
        expect(read.mock.calls[0]?.[0]).toBe('quillmere://app/__file/t/a.bin');
        expect(fetched).toHaveBeenCalledTimes(fetches);
    });

    it('comes by the scheme where the platform has no road of its own', async () => {
        const fetched = scheme();
        expect(await doc.range(5, 100)).toEqual(file.slice(5, 105));
        expect(fetched).toHaveBeenCalledTimes(1);
    });

    it('can be handed to a worker', async () => {
        platform((_, length) => length);
        const bytes = await doc.range(0, MB);
        structuredClone(bytes.buffer, { transfer: [bytes.buffer] });
        expect(bytes.length).toBe(0);
        expect((await doc.range(MB, 10)).length).toBe(10);
    });

    it('ends at once when it is no longer wanted, whatever the platform does', async () => {
        platform(() => undefined);
        const fetched = scheme();
        const stop = new AbortController();
        const reading = doc.range(0, 100, stop.signal);
        stop.abort();
        await expect(reading).rejects.toThrow('abort');
        await expect(doc.range(0, 100, stop.signal)).rejects.toThrow('abort');
        expect(fetched).not.toHaveBeenCalled();
    });
});
