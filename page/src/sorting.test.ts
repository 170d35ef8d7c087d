import { expect, test } from 'vitest';
import type { Entry } from './bridge';
import { type Column, type Direction, documentsOf, findTyped, sortEntries } from './sorting';

const entry = (name: string, more: Partial<Entry> = {}): Entry => ({
    id: name,
    name,
    isDirectory: false,
    size: 10,
    modified: 1,
    ext: name.split('.')[1] ?? '',
    ...more,
});
// In the order in which the shell sends them.
const entries = [
    entry('z folder', { isDirectory: true, size: null, modified: 9 }),
    entry('File2.txt', { size: 30, modified: 0 }),
    entry('file10.pdf', { size: null, modified: 5 }),
    entry('locked.pdf', { size: 20, blockedReason: 'no' }),
    entry('nested.zip', { size: 30 }),
    entry('fjord.png', { size: 5 }),
];

test.each<[Column, Direction, string]>([
    ['name', 'ascending', 'z folder,File2.txt,file10.pdf,locked.pdf,nested.zip,fjord.png'],
    ['name', 'descending', 'z folder,fjord.png,nested.zip,locked.pdf,file10.pdf,File2.txt'],
    ['size', 'descending', 'z folder,File2.txt,nested.zip,locked.pdf,fjord.png,file10.pdf'],
    ['size', 'ascending', 'z folder,file10.pdf,fjord.png,locked.pdf,File2.txt,nested.zip'],
    ['modified', 'descending', 'z folder,file10.pdf,locked.pdf,nested.zip,fjord.png,File2.txt'],
    ['kind', 'ascending', 'z folder,locked.pdf,file10.pdf,fjord.png,File2.txt,nested.zip'],
])('sorts by %s %s: folders first, equals as they came', (column, direction, names) => {
    expect(
        sortEntries(entries, column, direction)
            .map(({ name }) => name)
            .join(),
    ).toBe(names);
});

test('Left and Right lead through documents only', () => {
    expect(documentsOf(entries).map(({ name }) => name)).toEqual(['File2.txt', 'file10.pdf', 'fjord.png']);
});

test.each<[string, string, number, { index: number; place: number; matches: number }]>([
    ['finds the first name from the selection on', 'f', 2, { index: 2, place: 1, matches: 3 }],
    ['goes round at the end', 'fi', 5, { index: 1, place: 0, matches: 2 }],
    ['does not mind the case', 'file1', 0, { index: 2, place: 0, matches: 1 }],
    ['walks on when one letter is typed again', 'ff', 2, { index: 5, place: 2, matches: 3 }],
    ['tells when there is no such name', 'q', 0, { index: -1, place: 0, matches: 0 }],
])('typing %s', (_, typed, from, found) => {
    expect(findTyped(entries, typed, from)).toEqual(found);
});
