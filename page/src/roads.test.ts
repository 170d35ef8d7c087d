import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { expect, test } from 'vitest';
import { kindOfExtension } from './kinds';
import { type ViewerName, viewerFor } from './registry';

const table = readFileSync(join(import.meta.dirname, '../../prepare/FileKinds.h'), 'utf8');
const roads = [...table.matchAll(/\{FileKind::(\w+), "([^"]+)"\}/g)].flatMap(([, road = '', extensions = '']) =>
    extensions.split(' ').map(ext => [road, ext] as const),
);
const FAMILY: Record<string, string> = {
    image: 'image',
    officeWords: 'doc',
    officeSlides: 'doc',
    legacyVideo: 'video',
    legacyAudio: 'sound',
};
const PLAYER: Record<string, ViewerName> = { legacyVideo: 'video', legacyAudio: 'audio' };

test('the shell has a row for every road', () =>
    expect(new Set(roads.map(([road]) => road))).toEqual(new Set(Object.keys(FAMILY))));

test.each(roads)('%s: %s is the same to the page', async (road, ext) => {
    // Lists show TypeScript far more often than transport streams.
    if (ext !== 'ts') expect(kindOfExtension(ext).family).toBe(FAMILY[road]);
    const player = PLAYER[road];
    if (!player) return;
    const unconverted = { ext, size: 100, range: async () => new Uint8Array([0, 1, 2, 3]) };
    expect(await viewerFor(unconverted)).toEqual({ viewer: player });
});
