import { expect, test } from 'vitest';
import { LARGE_TEXT, nextBest, type ViewerName, viewerFor, waysToShow } from './registry';

const text = 'const depth = 12;',
    binary = '\x00\x01\x02\x03',
    transportStream = 'G@\x00\x10\x00',
    png = '\x89PNG\r\n\x1a\n\x00\x00',
    pdf = '%PDF-1.7\n%\xe2\xe3',
    docx = 'PK\x03\x04\x14\x00\x00\x00word/document.xml';
const bytesOf = (latin1: string) => Uint8Array.from(latin1, letter => letter.charCodeAt(0));
const docOf = (ext: string, head: string, size: number) => ({ ext, size, range: async () => bytesOf(head) });

type Asked = { ext: string; kind?: 'text' | 'pages' | 'slides'; size?: number; head?: string };
test.each<[string, Asked, ViewerName, RegExp?]>([
    ['the hint over the extension', { ext: 'png', kind: 'text', head: png }, 'text'],
    ['pages that were converted', { ext: 'pdf', kind: 'pages', head: pdf }, 'pdf'],
    ['slides that were not converted, by their bytes', { ext: 'pptx', kind: 'slides', head: binary }, 'hex'],
    ['a picture', { ext: 'webp', head: 'RIFF\x00\x00\x00\x00WEBPVP8 ' }, 'image'],
    ['a broken picture', { ext: 'png', head: binary }, 'image'],
    ['a Word document that stayed one', { ext: 'docx', head: docx }, 'docx'],
    ['text up to the limit', { ext: 'log', size: LARGE_TEXT, head: text }, 'text'],
    ['text beyond the limit', { ext: 'log', size: LARGE_TEXT + 1, head: text }, 'largetext'],
    ['hinted text beyond the limit', { ext: 'csv', kind: 'text', size: LARGE_TEXT + 1 }, 'largetext'],
    ['a video whose conversion failed', { ext: 'wmv', head: binary }, 'video'],
    ['a sound whose conversion failed', { ext: 'amr', head: '#!AMR\n\x00' }, 'audio'],
    ['a transport stream', { ext: 'ts', head: transportStream }, 'video'],
    ['TypeScript, which shares its extension with transport streams', { ext: 'ts', head: text }, 'text'],
    ['an unknown extension over text', { ext: 'qqq', head: text }, 'text'],
    ['an unknown extension over bytes', { ext: 'qqq', head: binary }, 'hex'],
    ['huge unknown text', { ext: '', head: text, size: LARGE_TEXT + 1 }, 'largetext'],
    ['an empty file', { ext: '', head: '', size: 0 }, 'text'],
    ['an empty picture', { ext: 'png', head: '', size: 0 }, 'text'],
    ['a picture without a name', { ext: '', head: png }, 'image'],
    ['a picture under another picture’s name', { ext: 'jpg', head: png }, 'image'],
    ['a picture named like text', { ext: 'txt', head: png }, 'image', /Plain text, but it holds a PNG image/],
    ['a document named like a picture', { ext: 'png', head: pdf }, 'pdf', /PNG image, but it holds a PDF document/],
    ['text named like a picture', { ext: 'jpg', head: text }, 'text', /JPEG image, but it holds text/],
    ['a drawing, which is text', { ext: 'svg', head: '<svg/>' }, 'image'],
    ['a film under a sound’s name', { ext: 'm4a', head: '\0\0\0\x18ftypmp42' }, 'audio'],
    ['bytes named like text', { ext: 'txt', head: binary }, 'hex'],
])('chooses a viewer for %s', async (_, { head = '', size = 100, kind, ext }, viewer, reason) => {
    const choice = await viewerFor({ ...docOf(ext, head, size), ...(kind ? { kind } : {}) });
    expect(choice.viewer).toBe(viewer);
    expect(choice.reason ?? '').toMatch(reason ?? /^$/);
});

test.each<[string, string, ViewerName, ViewerName[]]>([
    ['a picture that holds words', text, 'image', ['text', 'hex']],
    ['a picture that holds bytes', binary, 'image', ['hex']],
    ['text that cannot be laid out', text, 'text', ['hex']],
    ['bytes that cannot be read', binary, 'hex', []],
])('after %s', async (_, head, failed, expected) =>
    expect(await nextBest(docOf('x', head, 100), failed)).toEqual(expected),
);

test('a document can be shown as what it is named, as text and as bytes', () => {
    expect(waysToShow({ ext: 'csv', size: 9 }, 'table')).toEqual(['table', 'text', 'hex']);
    expect(waysToShow({ ext: 'png', size: LARGE_TEXT + 1 }, 'pdf')).toEqual(['pdf', 'image', 'largetext', 'hex']);
});
