import { beforeEach, expect, test } from 'vitest';
import type { Entry, Listing, ToShell } from './bridge';
import { Browser } from './browser';

const file = (name: string, more: Partial<Entry> = {}): Entry => ({
    id: `id-${name}`,
    name,
    isDirectory: false,
    size: 1,
    modified: 0,
    ext: name.split('.')[1] ?? '',
    ...more,
});
const listing = (path: string, more: Partial<Listing> = {}): Listing => ({
    token: 'T',
    name: 'dir',
    kind: 'folder',
    path,
    parentId: path === '/x/dir' ? null : 'parent',
    entries: [
        file('sub', { isDirectory: true }),
        file('a.txt'),
        file('b.zip'),
        file('c.png'),
        file('d.pdf', { blockedReason: 'no' }),
        file('e.md'),
    ],
    ...more,
});
let posted: ToShell[], browser: Browser;
beforeEach(() => {
    posted = [];
    browser = new Browser(message => posted.push(message));
});
const enter = (...paths: string[]) => paths.map(path => browser.arrived(listing(path)));
const named = (name: string) => browser.entries.find(entry => entry.name === name)!;

test('steps through the documents in the order of the list and stops at its ends', () => {
    enter('/x/dir');
    browser.open(named('c.png'));
    expect(browser.position).toEqual({ index: 1, count: 3 });
    browser.step(1);
    browser.step(1);
    expect(posted.map(message => 'id' in message && message.id)).toEqual(['id-c.png', 'id-e.md']);
    browser.sort('name', 'descending');
    browser.step(1);
    expect(posted.at(-1)).toEqual({ type: 'container-open', token: 'T', id: 'id-c.png' });
    browser.refresh();
    enter('/x/dir');
    expect(browser.recall().name).toBe('c.png');
});

test('steps nowhere without a document of this list', () => {
    enter('/x/dir');
    browser.step(1);
    browser.open(named('sub'));
    browser.step(1);
    browser.open(named('a.txt'));
    browser.begun(undefined);
    browser.step(1);
    expect(posted.map(message => 'id' in message && message.id)).toEqual(['id-sub', 'id-a.txt']);
});

test('does not ask the shell for a blocked entry', () => {
    enter('/x/dir');
    browser.open(named('d.pdf'));
    expect(posted).toEqual([]);
});

test('coming up selects the folder one came from and keeps the position of the list', () => {
    enter('/x/dir');
    browser.remember({ name: 'a.txt', scrollTop: 120 });
    enter('/x/dir/sub');
    expect(browser.recall()).toEqual({ name: '', scrollTop: 0 });
    browser.up();
    enter('/x/dir');
    expect(browser.recall()).toEqual({ name: 'sub', scrollTop: 120 });
    expect(browser.recall()).toEqual({ name: 'a.txt', scrollTop: 120 });
});

test.each([
    ['the opened folder is as far up as the path leads', ['/x/dir', '/x/dir/p/q'], [null, 2, 1, 0]],
    ['another one opened later has its own top', ['/x/dir', '/y/other'], [null, 0]],
    ['after a reload only the listed level is known', ['/x/dir/p'], [null, null, 0]],
])('%s', (_, paths, above) => {
    enter(...paths);
    expect(browser.levels.map(level => level.above)).toEqual(above);
});

test('climbing goes up level by level, by the token of each answer, and shows the last one only', () => {
    enter('/x/dir', '/x/dir/b.zip / p/q');
    browser.climb(3);
    expect(browser.arrived(listing('/x/dir/b.zip / p'))).toBe(false);
    expect(browser.arrived(listing('/x/dir/b.zip', { token: 'NESTED' }))).toBe(false);
    expect(browser.arrived(listing('/x/dir'))).toBe(true);
    expect(posted.map(message => 'token' in message && message.token)).toEqual(['T', 'T', 'NESTED']);
    expect(browser.recall().name).toBe('b.zip');
});

test.each([
    ['a failure', () => browser.failed()],
    ['something opened from outside', () => browser.begun(undefined)],
])('%s ends a climb', (_, end) => {
    enter('/x/dir', '/x/dir/p/q');
    browser.climb(2);
    end();
    expect(browser.arrived(listing('/x/dir/p'))).toBe(true);
    expect(posted).toHaveLength(1);
});
