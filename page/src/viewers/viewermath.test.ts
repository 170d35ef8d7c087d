import { describe, expect, test } from 'vitest';
import { positionOf, thumbOf } from './shared/bytescroll';
import { asciiOf, hexOffset, moveCursor, parseOffset } from './hex/format';
import { nextSpeed, remainingTime } from './media/commands';
import { peaksOf } from './media/peaks';
import { clampOffset, fitScale, nextStep, percent, zoomAbout } from './shared/zoom';

describe('bytes', () => {
    test.each<[string, number | undefined]>([
        ['4096', 4096], ['0x1000', 4096], ['1000h', 4096], ['ff', 255], ['50%', 5000], ['1,024', 1024], ['99999', 9999], ['0xffffff', 9999],
        ['', undefined], ['12x', undefined], ['-1', undefined], ['%', undefined],
    ])('offset %s', (text, expected) => expect(parseOffset(text, 10_000)).toBe(expected));

    test.each<[string, boolean, number, number]>([
        ['ArrowUp', false, 5, 5], ['ArrowDown', false, 5, 21], ['ArrowDown', false, 98, 98], ['ArrowRight', false, 99, 99], ['ArrowLeft', false, 0, 0],
        ['PageDown', false, 3, 35], ['PageDown', false, 90, 99], ['PageUp', false, 20, 4], ['Home', false, 37, 32], ['End', false, 97, 99], ['Home', true, 37, 0], ['End', true, 0, 99],
    ])('%s (ctrl %s) from %i', (key, ctrl, offset, expected) => expect(moveCursor(key, ctrl, { offset, size: 100, perRow: 16, pageRows: 2 })).toBe(expected));

    test('columns', () => {
        expect(hexOffset(0x1f, 100)).toBe('0000001F');
        expect(hexOffset(0, 0x1_0000_0001)).toBe('0000000000');
        expect([0x41, 0x1f, 0x7e, 0x7f, 0xff].map(asciiOf).join('')).toBe('A·~··');
    });
});

describe('zoom', () => {
    test('a picture is shrunk to fit, never enlarged', () => {
        expect(fitScale({ width: 4000, height: 1000 }, { width: 1000, height: 1000 })).toBe(0.25);
        expect(fitScale({ width: 10, height: 10 }, { width: 1000, height: 1000 })).toBe(1);
        expect(fitScale({ width: 0, height: 0 }, { width: 100, height: 100 })).toBe(1);
    });

    test('steps go on from any scale and stop at the ends', () => {
        expect(nextStep(0.38, 1)).toBe(0.5);
        expect(nextStep(0.38, -1)).toBe(0.3333);
        expect(nextStep(1, 1)).toBe(1.25);
        expect(nextStep(32, 1)).toBe(32);
        expect(nextStep(0.01, -1)).toBe(0.01);
        expect([percent(0.3333), percent(0.0833), percent(2)]).toEqual(['33%', '8.3%', '200%']);
    });

    test('the point under the pointer stays', () => {
        const offset = { x: 12, y: -30 }, pointer = { x: 100, y: 50 };
        const after = zoomAbout(offset, pointer, 0.5, 2);
        const before = { x: (pointer.x - offset.x) / 0.5, y: (pointer.y - offset.y) / 0.5 };
        expect({ x: (pointer.x - after.x) / 2, y: (pointer.y - after.y) / 2 }).toEqual(before);
    });

    test('no gap opens at an edge', () => {
        const room = { width: 100, height: 100 };
        expect(clampOffset({ x: 500, y: -500 }, { width: 200, height: 50 }, room, 1)).toEqual({ x: 50, y: 0 });
    });
});

test('the scroll thumb and its position are each other\'s inverse', () => {
    for (const at of [0, 0.25, 1]) {
        const { top, height } = thumbOf({ at, visible: 1e-6 }, 400);
        expect(height).toBe(32);
        expect(positionOf(top, height, 400)).toBeCloseTo(at);
    }
    expect(positionOf(10, 400, 400)).toBe(0);
});

describe('media', () => {
    test('speeds and times', () => {
        expect([nextSpeed(1, 1), nextSpeed(1, -1), nextSpeed(3, 1), nextSpeed(0.5, -1), nextSpeed(1.1, 1)]).toEqual([1.25, 0.75, 3, 0.5, 1.25]);
        expect([remainingTime(84.2, 233), remainingTime(5, 3), remainingTime(0, Infinity)]).toEqual(['−2:29', '−0:00', '']);
    });

    test('peaks', () => {
        expect(peaksOf(Float32Array.of(0.1, -0.5, 0.25, 0, 0, 0), 3)).toEqual([1, 0.5, 0]);
        expect(peaksOf(new Float32Array(4), 2)).toEqual([0, 0]);
        expect(peaksOf(new Float32Array(0), 2)).toEqual([0, 0]);
    });
});
