import { describe, expect, test } from 'vitest';
import { clampOffset, fitScale, nextStep, percent, zoomAbout } from './zoom';

describe('zoom', () => {
    test('a picture is shrunk to fit, never enlarged', () => {
        expect(fitScale({ width: 4000, height: 1000 }, { width: 1000, height: 1000 })).toBe(0.25);
        expect(fitScale({ width: 10, height: 10 }, { width: 1000, height: 1000 })).toBe(1);
        expect(fitScale({ width: 0, height: 0 }, { width: 100, height: 100 })).toBe(1);
    });

    test('steps go on from any scale and stop at the ends', () => {
        expect(nextStep(0.38, 1)).toBe(0.5);
        expect(nextStep(0.332, 1)).toBe(0.5);
        expect(nextStep(0.334, -1)).toBe(0.25);
        expect(nextStep(0.38, -1)).toBe(0.3333);
        expect(nextStep(1, 1)).toBe(1.25);
        expect(nextStep(32, 1)).toBe(32);
        expect(nextStep(0.01, -1)).toBe(0.01);
        expect([percent(0.3333), percent(0.0833), percent(2)]).toEqual(['33%', '8.3%', '200%']);
    });

    test('the point under the pointer stays', () => {
        const offset = { x: 12, y: -30 },
            pointer = { x: 100, y: 50 };
        const after = zoomAbout(offset, pointer, 0.5, 2);
        const before = { x: (pointer.x - offset.x) / 0.5, y: (pointer.y - offset.y) / 0.5 };
        expect({ x: (pointer.x - after.x) / 2, y: (pointer.y - after.y) / 2 }).toEqual(before);
    });

    test('no gap opens at an edge', () => {
        const room = { width: 100, height: 100 };
        expect(clampOffset({ x: 500, y: -500 }, { width: 200, height: 50 }, room, 1)).toEqual({ x: 50, y: 0 });
    });
});
