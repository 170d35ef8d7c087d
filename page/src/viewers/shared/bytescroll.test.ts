import { expect, test } from 'vitest';
import { positionOf, thumbOf } from './bytescroll';

test("the scroll thumb and its position are each other's inverse", () => {
    for (const at of [0, 0.25, 1]) {
        const { top, height } = thumbOf({ at, visible: 1e-6 }, 400);
        expect(height).toBe(32);
        expect(positionOf(top, height, 400)).toBeCloseTo(at);
    }
    expect(positionOf(10, 400, 400)).toBe(0);
});
