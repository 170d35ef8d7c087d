import { describe, expect, test } from 'vitest';
import { nextSpeed, remainingTime } from './commands';
import { peaksOf } from './peaks';

describe('media', () => {
    test('speeds and times', () => {
        expect([nextSpeed(1, 1), nextSpeed(1, -1), nextSpeed(3, 1), nextSpeed(0.5, -1), nextSpeed(1.1, 1)]).toEqual([
            1.25, 0.75, 3, 0.5, 1.25,
        ]);
        expect([remainingTime(84.2, 233), remainingTime(5, 3), remainingTime(0, Infinity)]).toEqual([
            '−2:29',
            '−0:00',
            '',
        ]);
    });

    test('peaks', () => {
        expect(peaksOf(Float32Array.of(0.1, -0.5, 0.25, 0, 0, 0), 3)).toEqual([1, 0.5, 0]);
        expect(peaksOf(new Float32Array(4), 2)).toEqual([0, 0]);
        expect(peaksOf(new Float32Array(0), 2)).toEqual([0, 0]);
    });
});
