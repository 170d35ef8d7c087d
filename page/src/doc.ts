import { readNatively } from './reads';

/** A document that the shell has granted to the page. */
export interface Doc {
    /** Grant path, of the page's own origin. */
    readonly url: string;
    readonly name: string;
    /** Extension of the granted file, lower case; it differs from `originalExt` when the file was converted. */
    readonly ext: string;
    readonly originalExt: string;
    readonly kind?: 'text' | 'pages' | 'slides';
    /** Size of the granted file in bytes. */
    readonly size: number;
    readonly requestId: number;
    /** The whole file. */
    bytes(signal?: AbortSignal): Promise<Uint8Array<ArrayBuffer>>;
    /** The whole file as text; see decodeText for the order of encodings. */
    text(signal?: AbortSignal): Promise<string>;
    /** Bytes from `start`, clamped to the file; an empty range costs no request. */
    range(start: number, length: number, signal?: AbortSignal): Promise<Uint8Array<ArrayBuffer>>;
}

/** The file itself could not be read; no other viewer would fare better. */
export class ReadFailure extends Error {}

/** A viewer knows what keeps it from showing the file, and that another view of its bytes would help nobody. */
export class Refusal extends Error {}

export type DocFields = Pick<Doc, 'url' | 'name' | 'ext' | 'originalExt' | 'kind' | 'size' | 'requestId'>;

// Reading one large body at once costs the web process the square of its size.
const PIECE = 8 * 1024 * 1024;

export function makeDoc(fields: DocFields): Doc {
    async function range(start: number, length: number, signal?: AbortSignal) {
        const from = Math.max(0, Math.min(start, fields.size));
        const to = Math.max(from, Math.min(start + length, fields.size));
        const out = new Uint8Array(to - from);
        if (await readNatively(fields.url, from, out, signal)) return out;
        for (let at = from; at < to; at += PIECE) {
            out.set(await fetchPiece(fields.url, at, Math.min(at + PIECE, to), signal), at - from);
        }
        return out;
    }
    const bytes = (signal?: AbortSignal) => range(0, fields.size, signal);
    return {
        ...fields,
        range,
        bytes,
        text: async signal => (await import('./decode')).decodeText(await bytes(signal)).text,
    };
}

async function fetchPiece(url: string, from: number, to: number, signal?: AbortSignal) {
    let piece: Uint8Array<ArrayBuffer>;
    try {
        const response = await fetch(url, {
            headers: { Range: `bytes=${from}-${to - 1}` },
            signal: signal ?? null,
            cache: 'no-store',
        });
        if (response.status !== 206 && !(response.status === 200 && from === 0))
            throw new Error(`status ${response.status}`);
        piece = new Uint8Array(await response.arrayBuffer());
    } catch (error) {
        if (signal?.aborted) throw error;
        throw new ReadFailure('The file could not be read. It may have been moved or changed.', { cause: error });
    }
    if (piece.length !== to - from) throw new ReadFailure('The file changed while it was being read. Open it again.');
    return piece;
}
