import { expect, test } from 'vitest';
import { pageStep, scrollToShow, visibleRows } from './virtualrows';

test.each<[string, number, number, number, { first: number; last: number }]>([
    ['at the top', 0, 340, 10_000, { first: 0, last: 12 }],
    ['in the middle, partly visible rows included', 3417, 340, 10_000, { first: 98, last: 113 }],
    ['at the end', 10_000 * 34 + 12 - 340, 340, 10_000, { first: 9988, last: 10_000 }],
    ['past the end, after the list has become shorter', 50_000, 340, 20, { first: 20, last: 20 }],
    ['without rows', 0, 340, 0, { first: 0, last: 0 }],
    ['without height', 0, 0, 5, { first: 0, last: 2 }],
])('rows in sight %s', (_, scrollTop, height, count, rows) => {
    expect(visibleRows(scrollTop, height, 34, count, 2)).toEqual(rows);
});

test.each<[string, number, number, number]>([
    ['a row in sight leaves the position alone', 5, 100, 100],
    ['a row above comes to the top', 2, 300, 68],
    ['a row below comes to the bottom with its margin', 20, 0, 21 * 34 + 12 - 340],
    ['the first row shows the margin above it', 0, 4, 0],
])('scrolling: %s', (_, index, scrollTop, expected) => {
    expect(scrollToShow(index, scrollTop, 340, 34)).toBe(expected);
});

test('a page is a screenful less one row, but never nothing', () => {
    expect([pageStep(340, 34), pageStep(20, 34)]).toEqual([9, 1]);
});
