import { expect, test } from 'vitest';
import type { Busy, Failure, FromShell, OpenContainer, OpenFile } from './bridge';
import { NOTHING_YET, next, type PageEvent, type State } from './screen';

const busy = (requestId: number): Busy => ({ type: 'busy', name: 'a.pdf', requestId });
const file = (requestId: number, containerToken?: string): OpenFile => ({
    type: 'open',
    url: '/u',
    name: 'a.pdf',
    ext: 'pdf',
    originalExt: 'pdf',
    size: 1,
    requestId,
    ...(containerToken === undefined ? {} : { containerToken }),
});
const list = (requestId: number): OpenContainer => ({
    type: 'open',
    kind: 'container',
    name: 'b',
    requestId,
    container: { token: 't', name: 'b', kind: 'folder', path: '/b', parentId: null, entries: [] },
});
const error = (requestId: number): Failure => ({ type: 'error', message: 'No.', requestId });
const opened = file(3, 't'),
    replaced = file(2);

const after = (...messages: (FromShell | PageEvent)[]): State => messages.reduce(next, NOTHING_YET);

test.each<[string, (FromShell | PageEvent)[], State['screen']['view'], number]>([
    ['nothing asked', [{ type: 'waited' }], 'start', 0],
    ['asked before the wait is over', [busy(1), { type: 'waited' }], 'busy', 1],
    ['a file', [busy(1), file(1)], 'document', 1],
    ['a folder', [busy(1), list(1)], 'list', 1],
    ['a late file', [busy(1), busy(2), file(1)], 'busy', 2],
    ['a late failure', [busy(1), busy(2), list(2), error(1)], 'list', 2],
    ['a late announcement', [busy(2), file(2), busy(1)], 'document', 2],
    ['a failure without announcement', [error(5)], 'error', 5],
    ['an answer after cancelling', [busy(1), error(2), file(1)], 'error', 2],
    ['the platform shows it', [busy(1), { type: 'native-preview', name: 'a', requestId: 1 }], 'native', 1],
    ['a viewer fails', [busy(3), opened, { type: 'failed', file: opened, message: 'No.' }], 'error', 3],
    [
        'a viewer fails too late',
        [busy(2), replaced, opened, { type: 'failed', file: replaced, message: 'No.' }],
        'document',
        3,
    ],
    ['the window becomes active', [list(1), { type: 'active', value: true }], 'list', 1],
])('%s', (_, messages, view, latest) => {
    const state = after(...messages);
    expect([state.screen.view, state.latest]).toEqual([view, latest]);
});

test('a failed document keeps its place in the folder and can be shown another way', () => {
    const { screen } = after(busy(3), opened, { type: 'failed', file: opened, message: 'No.' });
    expect(screen).toEqual({
        view: 'error',
        file: opened,
        failure: { type: 'error', name: 'a.pdf', message: 'No.', requestId: 3, containerToken: 't' },
    });
});
