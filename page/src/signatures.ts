import type { ViewerName } from './registry';

/** What the first bytes of a file say it is, whatever its name says. */
export interface Signature {
    viewer: ViewerName;
    /** With its article, for a sentence. */
    label: string;
}

// Bytes as Latin-1; "?" stands for any byte.
const TABLE: [viewer: ViewerName, label: string, at: number, bytes: string][] = [
    ['image', 'a PNG image', 0, '\x89PNG\r\n\x1a\n'],
    ['image', 'a JPEG image', 0, '\xff\xd8\xff'],
    ['image', 'a GIF image', 0, 'GIF87a'],
    ['image', 'a GIF image', 0, 'GIF89a'],
    ['image', 'a WebP image', 0, 'RIFF????WEBP'],
    ['image', 'an AVIF image', 4, 'ftypavif'],
    ['image', 'an AVIF image', 4, 'ftypavis'],
    ['image', 'a bitmap image', 0, 'BM????\0\0\0\0????(\0\0\0'],
    ['image', 'a bitmap image', 0, 'BM????\0\0\0\0????|\0\0\0'],
    ['audio', 'an MPEG-4 sound', 4, 'ftypM4A '],
    ['video', 'a QuickTime film', 4, 'ftypqt  '],
    ['video', 'an MPEG-4 film', 4, 'ftypisom'],
    ['video', 'an MPEG-4 film', 4, 'ftypiso'],
    ['video', 'an MPEG-4 film', 4, 'ftypmp4'],
    ['video', 'an MPEG-4 film', 4, 'ftypM4V'],
    ['video', 'an MPEG-4 film', 4, 'ftypavc1'],
    ['video', 'a Matroska or WebM film', 0, '\x1a\x45\xdf\xa3'],
    ['audio', 'an Ogg sound', 0, 'OggS'],
    ['audio', 'a FLAC sound', 0, 'fLaC'],
    ['audio', 'a wave sound', 0, 'RIFF????WAVE'],
    ['audio', 'an MP3 sound', 0, 'ID3\x02'],
    ['audio', 'an MP3 sound', 0, 'ID3\x03'],
    ['audio', 'an MP3 sound', 0, 'ID3\x04'],
];
const PDF_WITHIN = 1024;

const latin1 = (bytes: Uint8Array) => String.fromCharCode(...bytes);

const matches = (head: string, at: number, bytes: string) =>
    head.length >= at + bytes.length && [...bytes].every((byte, i) => byte === '?' || head[at + i] === byte);

/** What the head of a file (some thousand bytes) shows it to be; null when it has no known signature. */
export function sniff(head: Uint8Array): Signature | null {
    const text = latin1(head);
    const found = TABLE.find(([, , at, bytes]) => matches(text, at, bytes));
    if (found) {
        const isFilm = found[3] === 'OggS' && text.includes('theora');
        return isFilm ? { viewer: 'video', label: 'an Ogg film' } : { viewer: found[0], label: found[1] };
    }
    // Some writers leave bytes of their own before the mark.
    if (text.slice(0, PDF_WITHIN).includes('%PDF-')) return { viewer: 'pdf', label: 'a PDF document' };
    if (text.startsWith('PK\x03\x04')) return officeIn(text);
    return null;
}

/** Office files are zips whose first names tell them apart. */
function officeIn(text: string): Signature | null {
    if (text.includes('word/')) return { viewer: 'docx', label: 'a Word document' };
    if (text.includes('xl/') || text.includes('opendocument.spreadsheet'))
        return { viewer: 'table', label: 'a spreadsheet' };
    return null;
}
