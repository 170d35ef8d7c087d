import { expect, test } from 'vitest';
import type { Entry, OpenFile } from './bridge';
import { factsOfEntry, factsOfFile, textOf } from './details';

const entry: Entry = { id: '1', name: 'Letter.docx', isDirectory: false, size: 48_000, modified: 0, ext: 'docx' };
const file: OpenFile = {
    type: 'open',
    url: '/__file/T/k.pdf',
    name: 'Letter.docx',
    ext: 'pdf',
    originalExt: 'docx',
    size: 90_000,
    requestId: 1,
    kind: 'pages',
};
const names = (rows: [string, string][]) => rows.map(([name]) => name);

test('a converted document tells its own size only where the list knew it', () => {
    expect(names(factsOfFile(file, null, '').rows)).toEqual(['Shown as']);
    expect(factsOfFile(file, entry, '/x').rows).toEqual([
        ['Size', '48 KB'],
        ['Modified', '—'],
        ['Inside', '/x'],
        ['Shown as', 'PDF document'],
    ]);
    expect(factsOfFile({ ...file, ext: 'docx' }, null, '')).toMatchObject({
        rows: [['Size', '90 KB']],
        note: undefined,
    });
});

test('a blocked entry keeps its kind and tells the reason', () => {
    const facts = factsOfEntry({ ...entry, blockedReason: 'Locked.' }, '/x');
    expect([facts.label, facts.kind.icon, facts.note?.text]).toEqual(['Word document', 'file', 'Locked.']);
    expect(textOf(facts)).toBe('Name: Letter.docx\nKind: Word document\nSize: 48 KB\nModified: —\nInside: /x');
});
