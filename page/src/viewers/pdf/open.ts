import * as library from 'pdfjs-dist';
import type { Doc } from '../../doc';
import { DocRangeTransport, PDF_CHUNK } from './range';
import './streamiteration';

export interface OpenPdf {
    readonly document: Promise<library.PDFDocumentProxy>;
    readonly viewer: typeof import('pdfjs-dist/web/pdf_viewer.mjs');
    /** Called when the file asks for a password; `again` after a wrong one. */
    onPassword: (again: boolean, answer: (password: string) => void) => void;
}

const MESSAGES: Record<string, string> = {
    InvalidPDFException: 'This PDF is damaged and cannot be shown.',
    PasswordException: 'This PDF is protected by a password.',
};

export async function openPdf(doc: Doc, signal: AbortSignal): Promise<OpenPdf> {
    // The viewer components look for the library in a global of this name, so they come after it.
    (globalThis as { pdfjsLib?: unknown }).pdfjsLib = library;
    const [viewer, head] = await Promise.all([
        import('pdfjs-dist/web/pdf_viewer.mjs'),
        doc.range(0, PDF_CHUNK, signal),
    ]);
    signal.throwIfAborted();
    if (head.length === 0) throw new Error('This PDF is empty.');

    const port = new Worker(new URL('./worker.ts', import.meta.url), { type: 'module' });
    const worker = new library.PDFWorker({ port: port as unknown as null });
    const data = (folder: string) => new URL(`pdf/${folder}/`, document.baseURI).href;
    let readFailure: Error | undefined;
    const transport = new DocRangeTransport(doc, head, signal, error => {
        readFailure = error;
        void task.destroy();
    });
    const task = library.getDocument({
        range: transport,
        worker,
        rangeChunkSize: PDF_CHUNK,
        disableAutoFetch: true,
        disableStream: true,
        isEvalSupported: false,
        enableXfa: false,
        cMapUrl: data('cmaps'),
        iccUrl: data('iccs'),
        standardFontDataUrl: data('standard_fonts'),
        wasmUrl: data('wasm'),
    });
    signal.addEventListener('abort', () => {
        void task.destroy().finally(() => port.terminate());
    });
    const failed = new Promise<never>((_, reject) => {
        port.addEventListener('error', () => reject(new Error('The PDF reader could not be started.')));
    });
    const opened: OpenPdf = {
        document: Promise.race([task.promise, failed]).catch((error: unknown) => {
            signal.throwIfAborted();
            const name = error instanceof Error ? error.name : '';
            throw readFailure ?? new Error(MESSAGES[name] ?? 'This PDF could not be read.', { cause: error });
        }),
        viewer,
        onPassword: () => undefined,
    };
    task.onPassword = (answer: (password: string) => void, reason: number) =>
        opened.onPassword(reason === library.PasswordResponses.INCORRECT_PASSWORD, answer);
    return opened;
}
