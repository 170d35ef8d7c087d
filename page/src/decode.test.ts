import { expect, test } from 'vitest';
import { decodeText, looksLikeText } from './decode';

const bytes = (...values: number[]) => Uint8Array.from(values);
const utf8 = (text: string) => new TextEncoder().encode(text);

test.each<[string, Uint8Array, string, string]>([
    ['empty', bytes(), '', 'UTF-8'],
    ['UTF-8', utf8('Grüße, 水'), 'Grüße, 水', 'UTF-8'],
    ['UTF-8 with a mark, which is not text', bytes(0xef, 0xbb, 0xbf, 0x61), 'a', 'UTF-8'],
    ['UTF-16 little endian', bytes(0xff, 0xfe, 0x61, 0, 0x34, 0x6c), 'a水', 'UTF-16 LE'],
    ['UTF-16 big endian', bytes(0xfe, 0xff, 0, 0x61, 0x6c, 0x34), 'a水', 'UTF-16 BE'],
    ['legacy bytes that are no UTF-8', bytes(0x47, 0x72, 0xfc, 0xdf), 'Grüß', 'Windows-1252'],
    ['UTF-8 cut off at the end', bytes(0x61, 0xe6, 0xb0), 'aæ°', 'Windows-1252'],
    ['a mark that promises UTF-8 over bytes that are not', bytes(0xef, 0xbb, 0xbf, 0xff), '\ufffd', 'UTF-8'],
])('decodes %s', (_, input, text, encoding) => {
    expect(decodeText(input)).toEqual({ text, encoding });
});

test.each<[string, Uint8Array, boolean]>([
    ['nothing', bytes(), true],
    ['plain text with tabs and form feeds', utf8('a\tb\r\n\f'), true],
    ['coloured terminal output', utf8('\x1b[31mred'), true],
    ['UTF-8 whose last letter the head cuts in two', utf8('水水').slice(0, 4), true],
    ['a few legacy letters', bytes(0x47, 0x72, 0xfc, 0xdf, 0x65, 0x20, 0x61, 0x75), true],
    ['UTF-16 with a mark', bytes(0xff, 0xfe, 0x61, 0), true],
    ['zero bytes', bytes(0x61, 0, 0x62), false],
    ['an executable', bytes(0x7f, 0x45, 0x4c, 0x46), false],
    ['compressed data without control bytes', bytes(0xfd, 0x9a, 0xc3, 0xff, 0xe1, 0x88), false],
])('tells whether %s looks like text', (_, head, expected) => {
    expect(looksLikeText(head)).toBe(expected);
});
