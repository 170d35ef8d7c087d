import type { Doc } from './doc';
import { isTextual, kindOfExtension } from './kinds';
import { sniff } from './signatures';
import type { Viewer } from './view';

/** A viewer, what it is called in menus, and the extensions that lead to it. A new viewer is one row here. */
interface Row {
    label: string;
    extensions: string;
    load: () => Promise<Viewer>;
}

const VIEWERS = {
    text: { label: 'Text', extensions: '', load: () => import('./viewers/text') },
    largetext: { label: 'Text', extensions: '', load: () => import('./viewers/largetext') },
    hex: { label: 'Bytes', extensions: '', load: () => import('./viewers/hex') },
    pdf: { label: 'PDF document', extensions: 'pdf', load: () => import('./viewers/pdf') },
    image: {
        label: 'Picture',
        extensions: 'png apng jpg jpeg jfif gif webp avif svg bmp ico',
        load: () => import('./viewers/image'),
    },
    video: { label: 'Film', extensions: 'mp4 m4v webm mkv mov ogv', load: () => import('./viewers/media/video') },
    audio: {
        label: 'Sound',
        extensions: 'mp3 m4a flac ogg opus wav aac oga',
        load: () => import('./viewers/media/audio'),
    },
    docx: { label: 'Word document', extensions: 'docx docm dotx', load: () => import('./viewers/docx') },
    markdown: { label: 'Markdown', extensions: 'md markdown', load: () => import('./viewers/markdown') },
    table: { label: 'Table', extensions: 'csv tsv tab xls xlsx xlsm xlsb ods', load: () => import('./viewers/table') },
} satisfies Record<string, Row>;

export type ViewerName = keyof typeof VIEWERS;

export const loadViewer = (name: ViewerName): Promise<Viewer> => VIEWERS[name].load();
export const labelOf = (name: ViewerName): string => VIEWERS[name].label;

const BY_EXTENSION = new Map(
    Object.entries(VIEWERS).flatMap(([name, { extensions }]) =>
        extensions.split(' ').map(ext => [ext, name as ViewerName] as const),
    ),
);
BY_EXTENSION.delete('');

/** The editor holds a whole text in memory; beyond this the viewer that reads ranges takes over. */
export const LARGE_TEXT = 64 * 1024 * 1024;
const HEAD = 4096;

// Legacy media arrives unconverted when the conversion failed; the players then ask for it once more. Some of these
// extensions have a second meaning (TypeScript is ".ts" and ".mts" too), so the head decides.
const LEGACY_VIDEO = new Set('wmv asf avi mpg mpeg mpe m1v m2v ts mts m2ts vob dv divx flv rm rmvb 3gp 3g2'.split(' '));
const LEGACY_AUDIO = new Set('wma ac3 eac3 amr awb 3ga'.split(' '));
/** Viewers of files that are never plain text. */
const BINARY = new Set<ViewerName>(['pdf', 'image', 'video', 'audio', 'docx']);
const MEDIA = new Set<ViewerName>(['video', 'audio']);

export interface Choice {
    viewer: ViewerName;
    /** Said above the document, where it is not what its name promises. */
    reason?: string;
}

type Chosen = Pick<Doc, 'ext' | 'kind' | 'size' | 'range'>;

// The detector of encodings is larger than the rest of the page, so it comes when it is asked.
const looksLikeText = async (head: Uint8Array) => (await import('./decode')).looksLikeText(head);

const textFor = (size: number): ViewerName => (size > LARGE_TEXT ? 'largetext' : 'text');

/** Chooses the viewer: the shell's hint first, then the extension, unless the first bytes say that the name lies. */
export async function viewerFor(doc: Chosen, signal?: AbortSignal): Promise<Choice> {
    const text = textFor(doc.size);
    if (doc.kind === 'text') return { viewer: text };
    const known = byExtension(doc.ext);
    if (doc.size === 0) return { viewer: known && !BINARY.has(known) ? known : text };
    const head = await doc.range(0, HEAD, signal);
    const found = sniff(head);
    if (found && (known === undefined || !agree(known, found.viewer))) {
        const named = known === undefined && !isTextual(doc.ext) ? undefined : lie(doc.ext, found.label);
        return named ? { viewer: found.viewer, reason: named } : { viewer: found.viewer };
    }
    if (known && !(BINARY.has(known) && !found && doc.ext !== 'svg' && (await looksLikeText(head))))
        return { viewer: known };
    if (known) return { viewer: text, reason: lie(doc.ext, 'text') };
    const legacy = LEGACY_AUDIO.has(doc.ext) ? 'audio' : LEGACY_VIDEO.has(doc.ext) ? 'video' : null;
    return { viewer: (await looksLikeText(head)) ? text : (legacy ?? 'hex') };
}

const byExtension = (ext: string): ViewerName | undefined => BY_EXTENSION.get(ext);

const agree = (named: ViewerName, found: ViewerName) => named === found || (MEDIA.has(named) && MEDIA.has(found));

const lie = (ext: string, label: string) =>
    `This file is named like a ${kindOfExtension(ext).label}, but it holds ${label}.`;

/** Viewers to try after one that failed, best first: always ends with the bytes. */
export async function nextBest(doc: Chosen, failed: ViewerName, signal?: AbortSignal): Promise<ViewerName[]> {
    if (failed === 'hex') return [];
    const readable = doc.size > 0 && (await looksLikeText(await doc.range(0, HEAD, signal)));
    const text = textFor(doc.size);
    return readable && failed !== text ? [text, 'hex'] : ['hex'];
}

/** What a document can be shown as, the way it is shown now included. */
export function waysToShow(doc: Pick<Doc, 'ext' | 'size'>, chosen: ViewerName): ViewerName[] {
    const ways = [chosen, byExtension(doc.ext), textFor(doc.size), 'hex' as const];
    return [...new Set(ways.filter(way => way !== undefined))];
}
