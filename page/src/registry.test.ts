import { expect, test } from 'vitest';
import { LARGE_TEXT, type ViewerName, viewerFor } from './registry';

const text = 'const depth = 12;',
    binary = '\x00\x01\x02\x03',
    transportStream = 'G@\x00\x10\x00';

test.each<[string, { ext: string; kind?: 'text' | 'pages' | 'slides'; size?: number; head?: string }, ViewerName]>([
    ['the hint over the extension', { ext: 'png', kind: 'text' }, 'text'],
    ['pages that were converted', { ext: 'pdf', kind: 'pages' }, 'pdf'],
    ['slides that were not converted, by their bytes', { ext: 'pptx', kind: 'slides', head: binary }, 'hex'],
    ['a picture', { ext: 'webp' }, 'image'],
    ['a Word document that stayed one', { ext: 'docx' }, 'docx'],
    ['text up to the limit', { ext: 'log', size: LARGE_TEXT }, 'text'],
    ['text beyond the limit', { ext: 'log', size: LARGE_TEXT + 1 }, 'largetext'],
    ['hinted text beyond the limit', { ext: 'csv', kind: 'text', size: LARGE_TEXT + 1 }, 'largetext'],
    ['a video whose conversion failed', { ext: 'wmv', head: binary }, 'video'],
    ['a sound whose conversion failed', { ext: 'amr', head: '#!AMR\n\x00' }, 'audio'],
    ['a transport stream', { ext: 'ts', head: transportStream }, 'video'],
    ['TypeScript, which shares its extension with transport streams', { ext: 'ts', head: text }, 'text'],
    ['an unknown extension over text', { ext: 'qqq', head: text }, 'text'],
    ['an unknown extension over bytes', { ext: 'qqq', head: binary }, 'hex'],
    ['huge unknown text', { ext: '', head: text, size: LARGE_TEXT + 1 }, 'largetext'],
    ['an empty file', { ext: '', head: '', size: 0 }, 'text'],
])('chooses a viewer for %s', async (_, { head, size = 100, ...doc }, viewer) => {
    const range = async () => {
        // A head that a row does not give must not be asked for: known extensions cost no request.
        if (head === undefined) throw new Error('read');
        return new TextEncoder().encode(head);
    };
    expect(await viewerFor({ size, range, ...doc })).toBe(viewer);
});
