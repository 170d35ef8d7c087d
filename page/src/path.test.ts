import { expect, test } from 'vitest';
import type { Listing } from './bridge';
import { crumbsOf, entryPath, foldCrumbs } from './path';

test.each([
    ['/x/dir/docs', ['x', 'dir', 'docs']],
    ['/x/a.zip / docs/img', ['x', 'a.zip', 'docs', 'img']],
    ['/x/a.zip / docs/b.zip / in', ['x', 'a.zip', 'docs', 'b.zip', 'in']],
    ['/', []],
])('steps of %s', (path, steps) => {
    expect(crumbsOf(path)).toEqual(steps);
});

test.each<[Listing['kind'], string, string, string]>([
    ['folder', 'dir', '/x/dir/docs', '/x/dir/docs/a.txt'],
    ['archive', 'a.zip', '/x/a.zip', '/x/a.zip / a.txt'],
    ['archive', 'a.zip', '/x/a.zip / docs', '/x/a.zip / docs/a.txt'],
])('path of an entry in a %s %s at %s', (kind, name, path, expected) => {
    expect(entryPath({ kind, name, path, token: 't', parentId: null, entries: [] }, 'a.txt')).toBe(expected);
});

test('a long path folds in the middle', () => {
    const steps = ['a', 'b', 'c', 'd', 'e'];
    expect([5, 4, 3, 2].map(most => foldCrumbs(steps, most))).toEqual([
        steps,
        ['a', null, 'd', 'e'],
        ['a', null, 'e'],
        ['a', null, 'e'],
    ]);
});
