import { describe, expect, test } from 'vitest';
import type { RangeSource } from '../shared/blockcache';
import { findBytes, makeNeedle } from './bytesearch';
import { LineIndex } from './lineindex';
import { TextRows } from './textrows';

function source(bytes: Uint8Array): RangeSource {
    return { size: bytes.length, range: async (start, length) => bytes.slice(start, start + length) };
}

const utf8 = (text: string) => new TextEncoder().encode(text);

function utf16(text: string, little: boolean): Uint8Array {
    const bytes = new Uint8Array(2 + text.length * 2);
    const view = new DataView(bytes.buffer);
    view.setUint16(0, 0xfeff, little);
    for (let i = 0; i < text.length; i++) view.setUint16(2 + i * 2, text.charCodeAt(i), little);
    return bytes;
}

function rowsOf(bytes: Uint8Array, segment = 4096): TextRows {
    const rows = new TextRows(source(bytes), bytes.subarray(0, 65536));
    rows.segment = segment;
    return rows;
}

async function allStarts(rows: TextRows): Promise<number[]> {
    return (await rows.rows(rows.origin, 1_000_000)).map(row => row.start);
}

describe('rows', () => {
    const long = 'x'.repeat(200_000);
    const mixed = Array.from({ length: 9000 }, (_, i) => `${i} ${'äöü€😀'.repeat(i % 40)}`).join('\n');
    const cases: [string, Uint8Array, number][] = [
        ['short lines', utf8('one\ntwo\n\nfour\n'), 4096],
        ['no line feed at the end', utf8('one\ntwo'), 4096],
        ['one line without any line feed', utf8(long), 100],
        ['long line between short ones', utf8(`a\nb\n${long}\nc\nd`), 4096],
        ['long line of many-byte characters', utf8('€'.repeat(90_000)), 1000],
        ['continuation bytes only', new Uint8Array(150_000).fill(0x80), 64],
        ['mixed lengths across many blocks', utf8(mixed), 256],
        ['UTF-16 little endian', utf16(`one\n😀two\n${'𝄞'.repeat(60_000)}\nend`, true), 1000],
        ['UTF-16 big endian, odd length', Uint8Array.of(...utf16('Ċone\ntwo', false), 0), 1000],
    ];

    test.each(cases)('%s: the same rows from every side', async (_, bytes, segment) => {
        const rows = rowsOf(bytes, segment);
        const starts = await allStarts(rows);
        expect(starts[0]).toBe(rows.origin);
        for (let i = 1; i < starts.length; i++) {
            const length = (starts[i] as number) - (starts[i - 1] as number);
            expect(length).toBeGreaterThan(0);
            expect(length).toBeLessThanOrEqual(segment);
        }
        // Coming from a jump or from below leads to the same boundaries as walking from the top.
        const step = Math.max(1, Math.floor(starts.length / 60));
        for (let i = 0; i < starts.length; i += step) {
            const start = starts[i] as number;
            const end = starts[i + 1] ?? bytes.length;
            const fresh = rowsOf(bytes, segment);
            expect(await fresh.rowAt(Math.floor((start + end - 1) / 2))).toBe(start);
            expect(await fresh.rowAt(end - 1)).toBe(start);
            if (i > 0) expect(await fresh.move(start, -1)).toBe(starts[i - 1]);
        }
    });

    test.each([
        ['UTF-8', utf8(`a€${'😀'.repeat(300)}\r\nü\tend\n`), `a€${'😀'.repeat(300)}|ü\tend`],
        ['UTF-8 with mark', Uint8Array.of(0xef, 0xbb, 0xbf, ...utf8('mark\nnext')), 'mark|next'],
        ['Windows-1252', Uint8Array.of(0xdf, 0x20, 0xfc, 10, 0x41), 'ß ü|A'],
        ['UTF-16', utf16('Ċ one\n😀', true), 'Ċ one|😀'],
        ['control characters', Uint8Array.of(0x61, 0, 0x1b, 0x62), 'a␀␛b'],
    ])('text of %s', async (_, bytes, expected) => {
        const lines: string[] = [];
        for (const row of await rowsOf(bytes, 64).rows(rowsOf(bytes).origin, 1000)) {
            if (row.startsLine) lines.push(row.text);
            else lines[lines.length - 1] += row.text;
        }
        expect(lines.join('|')).toBe(expected);
    });
});

test('line numbers follow the counted part and are unknown beyond it', async () => {
    const line = `${'-'.repeat(99)}\n`;
    const bytes = utf8(line.repeat(30_000));
    const rows = rowsOf(bytes);
    const index = new LineIndex(source(bytes), (part, start) => rows.countNewlinesIn(part, start));
    expect(await index.lineAt(2_000_000)).toBeUndefined();
    const seen: number[] = [];
    await index.run(new AbortController().signal, () => seen.push(index.counted), 1);
    expect(seen).toEqual([1 << 20, 2 << 20, 3_000_000]);
    expect(await index.lineAt(2_000_000)).toBe(20_001);
    expect(await index.lineAt(2_000_099)).toBe(20_001);
    expect(index.newlines).toBe(30_000);
});

describe('search', () => {
    const signal = new AbortController().signal;
    const text = `first Needle ${'.'.repeat(500)} NEEDLE\nüber needle straße`;
    const bytes = utf8(text);
    const at = (part: string) => utf8(text.slice(0, text.indexOf(part))).length;

    test.each<[string, string, number, 'forward' | 'backward', number]>([
        ['folds ASCII case', 'needle', 0, 'forward', 6],
        ['goes on behind a match', 'needle', 7, 'forward', at('NEEDLE')],
        ['crosses the seam of two pieces', 'NEEDLE\nüber', 0, 'forward', at('NEEDLE')],
        ['finds what is not ASCII', 'straße', 0, 'forward', at('straße')],
        ['takes other letters exactly', 'STRAßE', 0, 'forward', -1],
        ['does not match past the end', 'straßee', 0, 'forward', -1],
        ['backward, nearest first', 'needle', bytes.length, 'backward', at('needle straße')],
        ['backward, before the start given', 'needle', at('NEEDLE'), 'backward', 6],
        ['backward, nothing left', 'needle', 6, 'backward', -1],
    ])('%s', async (_, query, from, direction, expected) => {
        for (const piece of [16, 37, 100_000]) {
            expect(await findBytes(source(bytes), makeNeedle(query, 'utf-8'), { from, direction, signal }, piece)).toBe(
                expected,
            );
        }
    });

    test('other encodings', async () => {
        const wide = utf16('abc €5', false);
        expect(
            await findBytes(source(wide), makeNeedle('€5', 'utf-16be'), { from: 0, direction: 'forward', signal }),
        ).toBe(10);
        const legacy = Uint8Array.of(0x20, 0xfc, 0x35);
        expect(
            await findBytes(source(legacy), makeNeedle('ü5', 'windows-1252'), {
                from: 0,
                direction: 'forward',
                signal,
            }),
        ).toBe(1);
    });

    test('stops when cancelled', async () => {
        const cancel = new AbortController();
        const search = findBytes(
            source(new Uint8Array(1000)),
            makeNeedle('zz', 'utf-8'),
            {
                from: 0,
                direction: 'forward',
                signal: cancel.signal,
                progress: () => cancel.abort(),
            },
            16,
        );
        await expect(search).rejects.toThrow();
    });
});
