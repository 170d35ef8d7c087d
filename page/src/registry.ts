import { looksLikeText } from './decode';
import type { Doc } from './doc';
import { isTextual } from './kinds';
import type { Viewer } from './view';

const LOADERS = {
    text: () => import('./viewers/text'),
    largetext: () => import('./viewers/largetext'),
    image: () => import('./viewers/image'),
    pdf: () => import('./viewers/pdf'),
    hex: () => import('./viewers/hex'),
    video: () => import('./viewers/media/video'),
    audio: () => import('./viewers/media/audio'),
    docx: () => import('./viewers/docx'),
    markdown: () => import('./viewers/markdown'),
    table: () => import('./viewers/table'),
} satisfies Record<string, () => Promise<Viewer>>;

export type ViewerName = keyof typeof LOADERS;

export const loadViewer = (name: ViewerName): Promise<Viewer> => LOADERS[name]();

/** The editor holds a whole text in memory; beyond this the viewer that reads ranges takes over. */
export const LARGE_TEXT = 64 * 1024 * 1024;
const HEAD = 4096;

const VIEWERS: [ViewerName, string][] = [
    ['pdf', 'pdf'],
    ['image', 'png apng jpg jpeg jfif gif webp avif svg bmp ico'],
    ['video', 'mp4 m4v webm mkv mov ogv'],
    ['audio', 'mp3 m4a flac ogg opus wav aac oga'],
    ['docx', 'docx docm dotx'],
    ['markdown', 'md markdown'],
    ['table', 'csv tsv tab xls xlsx xlsm xlsb ods'],
];
const BY_EXTENSION = new Map(VIEWERS.flatMap(([viewer, list]) => list.split(' ').map(ext => [ext, viewer] as const)));

// Legacy media arrives unconverted when the conversion failed; the players then ask for it once more. Some of these
// extensions have a second meaning (TypeScript is ".ts" and ".mts" too), so the head decides.
const LEGACY_VIDEO = new Set('wmv asf avi mpg mpeg mpe m1v m2v ts mts m2ts vob dv divx flv rm rmvb 3gp 3g2'.split(' '));
const LEGACY_AUDIO = new Set('wma ac3 eac3 amr awb 3ga'.split(' '));

/** Chooses the viewer: the shell's hint first, then the extension, then the first bytes. */
export async function viewerFor(
    doc: Pick<Doc, 'ext' | 'kind' | 'size' | 'range'>,
    signal?: AbortSignal,
): Promise<ViewerName> {
    const text = doc.size > LARGE_TEXT ? 'largetext' : 'text';
    if (doc.kind === 'text') return text;
    const known = BY_EXTENSION.get(doc.ext);
    if (known) return known;
    const legacy = LEGACY_AUDIO.has(doc.ext) ? 'audio' : LEGACY_VIDEO.has(doc.ext) ? 'video' : null;
    if (!legacy && isTextual(doc.ext)) return text;
    return looksLikeText(await doc.range(0, HEAD, signal)) ? text : (legacy ?? 'hex');
}
