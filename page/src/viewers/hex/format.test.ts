import { describe, expect, test } from 'vitest';
import { asciiOf, hexOffset, moveCursor, parseOffset } from './format';

describe('bytes', () => {
    test.each<[string, number | undefined]>([
        ['4096', 4096],
        ['0x1000', 4096],
        ['1000h', 4096],
        ['ff', 255],
        ['50%', 5000],
        ['1,024', 1024],
        ['99999', 9999],
        ['0xffffff', 9999],
        ['', undefined],
        ['12x', undefined],
        ['-1', undefined],
        ['%', undefined],
    ])('offset %s', (text, expected) => expect(parseOffset(text, 10_000)).toBe(expected));

    test.each<[string, boolean, number, number]>([
        ['ArrowUp', false, 5, 5],
        ['ArrowDown', false, 5, 21],
        ['ArrowDown', false, 98, 98],
        ['ArrowRight', false, 99, 99],
        ['ArrowLeft', false, 0, 0],
        ['PageDown', false, 3, 35],
        ['PageDown', false, 90, 99],
        ['PageUp', false, 20, 4],
        ['Home', false, 37, 32],
        ['End', false, 97, 99],
        ['Home', true, 37, 0],
        ['End', true, 0, 99],
    ])('%s (ctrl %s) from %i', (key, ctrl, offset, expected) =>
        expect(moveCursor(key, ctrl, { offset, size: 100, perRow: 16, pageRows: 2 })).toBe(expected),
    );

    test('columns', () => {
        expect(hexOffset(0x1f, 100)).toBe('0000001F');
        expect(hexOffset(0, 0x1_0000_0001)).toBe('0000000000');
        expect([0x41, 0x1f, 0x7e, 0x7f, 0xff].map(asciiOf).join('')).toBe('A·~··');
    });
});
