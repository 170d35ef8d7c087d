import { describe, expect, test } from 'vitest';
import { columnName, columnsOf, findCell, hasHeader, isNumber, matcher, trimmed } from './facts';

test.each([
    ['12', true],
    ['-1,234.50', true],
    ['1 234', true],
    ['.5', true],
    ['3e-5', true],
    ['12 %', true],
    ['', false],
    ['-', false],
    ['%', false],
    ['12 m', false],
    ['€ 1.234,50', true],
    ['-$12.00', true],
    ['(1,200.00)', true],
    ['12 USD', true],
    ['USD', false],
    ['R2 D2', false],
    ['2026-11-14', false],
    ['1.2.3', false],
])('number %j', (text, expected) => expect(isNumber(text)).toBe(expected));

test('column names', () => expect([0, 25, 26, 701, 702].map(columnName)).toEqual(['A', 'Z', 'AA', 'ZZ', 'AAA']));

test.each<[string, string[][], boolean]>([
    [
        'words above numbers',
        [
            ['Station', 'Depth'],
            ['1', '8.76'],
        ],
        true,
    ],
    [
        'numbers from the start',
        [
            ['1', '2'],
            ['3', '4'],
        ],
        false,
    ],
    [
        'one gap among the titles',
        [
            ['Station', '', 'Depth'],
            ['1', '2', '3'],
        ],
        true,
    ],
    [
        'more gaps than titles',
        [
            ['Station', '', ''],
            ['1', '2', '3'],
        ],
        false,
    ],
    [
        'the same title twice',
        [
            ['a', 'a'],
            ['1', '2'],
        ],
        false,
    ],
    ['a single row', [['Station', 'Depth']], false],
    ['nothing', [], false],
])('header: %s', (_, rows, expected) => expect(hasHeader(rows)).toBe(expected));

test('columns cover ragged rows, keep to limits and know numbers', () => {
    const columns = columnsOf(
        [
            ['1', 'x'.repeat(500)],
            ['2.5', '', 'late'],
        ],
        ['n'],
        10,
    );
    expect(columns.map(column => column.title)).toEqual(['n', 'B', 'C']);
    expect(columns.map(column => column.numeric)).toEqual([true, false, false]);
    expect(columns.map(column => column.width)).toEqual([64, 360, 64]);
    expect(columnsOf([Array(5).fill('')], undefined, 3)).toHaveLength(3);
});

describe('find', () => {
    const rows = [['Reed beds', 'x'], ['sill'], ['x', 'REED']];
    test.each<[string, string, [number, number], 1 | -1, [number, number] | undefined]>([
        ['next, case folded', 'reed', [0, 0], 1, [2, 1]],
        ['goes round at the end', 'reed', [2, 1], 1, [0, 0]],
        ['backward', 'x', [2, 0], -1, [0, 1]],
        ['from before the first cell', 'reed', [0, -1], 1, [0, 0]],
        ['only the same cell again', 'sill', [1, 0], 1, [1, 0]],
        ['missing', 'zz', [0, 0], 1, undefined],
    ])('%s', (_, text, [row, column], direction, expected) => {
        const walk = findCell(
            rows,
            2,
            matcher(text, { matchCase: false, wholeWord: false }),
            { row, column },
            direction,
        );
        const { value: found } = walk.next();
        expect(found && [found.row, found.column]).toEqual(expected);
    });

    test('a large table is searched in slices', () => {
        const large = Array.from({ length: 50_000 }, () => ['x']);
        const walk = findCell([...large, ['y']], 1, cell => cell === 'y', { row: 0, column: 0 }, 1);
        expect([walk.next().done, walk.next().done, walk.next()]).toEqual([
            false,
            false,
            { done: true, value: { row: 50_000, column: 0 } },
        ]);
    });

    test.each<[string, string, boolean, boolean, boolean]>([
        ['Reed beds', 'reed', false, false, true],
        ['Reed beds', 'reed', true, false, false],
        ['Reeds', 'Reed', false, true, false],
        ['(Reed)', 'reed', false, true, true],
        ['1.5*2', '.5*', false, false, true],
    ])('%j holds %j (case %s, word %s)', (cell, text, matchCase, wholeWord, expected) =>
        expect(matcher(text, { matchCase, wholeWord })(cell)).toBe(expected),
    );
});

test('rows that only a claimed size makes are none', () => {
    expect(trimmed([['a'], ['', ''], ['']])).toEqual([['a']]);
    expect(trimmed([['', '']])).toEqual([]);
});
