import { readdirSync, readFileSync } from 'node:fs';
import { join } from 'node:path';
import { describe, expect, test } from 'vitest';
import { ADVICE, ADVICE_BY_BEGINNING, adviceFor, CANCELLED, SESSION_EXPIRED } from './advice';

const root = join(import.meta.dirname, '../..');
const sources = (room: string): string[] =>
    readdirSync(join(root, room), { withFileTypes: true, recursive: true })
        .filter(file => file.isFile() && /\.(h|cpp)$/.test(file.name))
        .map(file => readFileSync(join(file.parentPath, file.name), 'utf8'));
const shell = ['base', 'files', 'prepare', 'containers', 'bridge', 'shell'].flatMap(sources).join('\n');
// The page's own sentences come from its readers of documents.
const page = readFileSync(join(root, 'page/src/doc.ts'), 'utf8');

const unescaped = (text: string) => text.replaceAll('\\"', '"');
const messages = readFileSync(join(root, 'containers/ContainerMessages.h'), 'utf8');
const declared = [...messages.matchAll(/(\w+) =\s*"((?:[^"\\]|\\.)*)"/g)].map(
    ([, name = '', text = '']) => [name, unescaped(text)] as const,
);
const failures = [
    ...shell.matchAll(/(?:FileFailure|ContainerError|sendError|Failure = |Failure{)[^;]*?"([A-Z][^"]*\.)"/g),
].map(([, text = '']) => text);
const never = new Set(['Invalid byte range.', 'Unsatisfiable byte range.', 'Invalid local file response.', CANCELLED]);

describe('the shell may say', () => {
    test.each(declared)('%s: %s', (_, sentence) => {
        const known = sentence.endsWith('.')
            ? Object.hasOwn(ADVICE, sentence)
            : ADVICE_BY_BEGINNING.some(([beginning]) => beginning === sentence);
        expect(known).toBe(true);
    });
    test('and every other failure has its advice', () => {
        expect(failures.length).toBeGreaterThan(4);
        expect(failures.filter(sentence => !never.has(sentence) && !Object.hasOwn(ADVICE, sentence))).toEqual([]);
    });
});

test('nothing in the table is said by nobody', () => {
    const said = `${shell}\n${page}`;
    const sentences = [
        ...Object.keys(ADVICE),
        ...ADVICE_BY_BEGINNING.map(([beginning]) => beginning),
        CANCELLED,
        SESSION_EXPIRED,
    ];
    expect(sentences.filter(sentence => !said.includes(sentence))).toEqual([]);
});

test.each<[string, RegExp]>([
    ['The archive could not be read: /home/ann/encrypted FFmpeg limit.zip is gone', /has not been moved/],
    ['The archive entry is truncated or corrupt.', /damaged/],
    ['Cannot open “too many codecs.avi”', /another program/],
    ['toString', /another program/],
])('%s', (message, advice) => expect(adviceFor(message)).toMatch(advice));
