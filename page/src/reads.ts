type Done = (count: number) => void;
type Read = (url: string, offset: number, length: number, buffer: ArrayBuffer, done: Done) => void;

const STEP = 4 * 1024 * 1024;
const KEPT = 2;
// The engine can never hand on a buffer that native code has written to. So these stay here, and bytes are copied out.
const scratch: ArrayBuffer[] = [];

/** The platform's own road to granted files. Not every platform has one, and then the private scheme is the only road. */
function nativeRead(): Read | undefined {
    return (globalThis as { quillMereRead?: Read }).quillMereRead;
}

export function canReadNatively(): boolean {
    return nativeRead() !== undefined;
}

/**
 * Fills `out` with the bytes from `offset` on. False when the platform has no such road, or refuses, or has fewer bytes:
 * then the private scheme does it, or says why it cannot be done.
 */
export async function readNatively(
    url: string,
    offset: number,
    out: Uint8Array,
    signal?: AbortSignal,
): Promise<boolean> {
    const read = nativeRead();
    if (!read) return false;
    const address = new URL(url, location.href).href;
    for (let at = 0; at < out.length; at += STEP) {
        signal?.throwIfAborted();
        const part = out.subarray(at, at + STEP);
        const count = await step(read, address, offset + at, part, signal);
        if (count !== part.length) return false;
    }
    return true;
}

/** One read by way of a scratch buffer. It cannot be called back: after an abort its end is no longer awaited. */
function step(read: Read, url: string, offset: number, out: Uint8Array, signal?: AbortSignal): Promise<number> {
    return new Promise((resolve, reject) => {
        const buffer = scratch.pop() ?? new ArrayBuffer(STEP);
        const stop = () => reject(signal?.reason);
        signal?.addEventListener('abort', stop, { once: true });
        read(url, offset, out.length, buffer, count => {
            signal?.removeEventListener('abort', stop);
            if (count > 0 && !signal?.aborted) out.set(new Uint8Array(buffer, 0, count));
            if (scratch.length < KEPT) scratch.push(buffer);
            resolve(count);
        });
    });
}
