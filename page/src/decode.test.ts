import { expect, test } from 'vitest';
import { decodeText, looksLikeText } from './decode';

// Real sentences, written in each encoding by the decoder's own tables turned round.
const WORDS: Record<string, [name: string, sentence: string]> = {
    shift_jis: ['Shift JIS', '湖は静かだった。夜明けの前に、漁師たちは小さな舟を出した。水面には霧がかかっていた。'],
    'euc-jp': ['EUC-JP', '湖は静かだった。夜明けの前に、漁師たちは小さな舟を出した。水面には霧がかかっていた。'],
    gb18030: ['GBK', '湖面很平静。天亮以前，渔夫们划着小船出去了。水面上有一层薄雾，远处的山看不清楚。'],
    big5: ['Big5', '湖面很平靜。天亮以前，漁夫們划著小船出去了。水面上有一層薄霧，遠處的山看不清楚。'],
    'euc-kr': ['EUC-KR', '호수는 고요했다. 동이 트기 전에 어부들은 작은 배를 띄웠다. 물 위에는 안개가 끼어 있었다.'],
    'koi8-r': ['KOI8-R', 'Озеро было тихим. Перед рассветом рыбаки вышли на маленьких лодках. Над водой стоял туман.'],
    'windows-1251': [
        'Windows-1251',
        'Озеро было тихим. Перед рассветом рыбаки вышли на маленьких лодках. Над водой стоял туман.',
    ],
    'windows-1252': [
        'Windows-1252',
        'Der See lag still. Vor Tagesanbruch fuhren die Fischer hinaus; über dem Wasser hing Nebel, kühl und grün.',
    ],
};

function sampleOf(label: string): Uint8Array {
    const decoder = new TextDecoder(label);
    const codes = new Map<string, number[]>();
    for (let i = 255; i >= 0; i--) codes.set(decoder.decode(Uint8Array.of(i)), [i]);
    for (let first = 0x81; first < 0xff; first++) {
        for (let second = 0x40; second < 0xff; second++) {
            const letter = decoder.decode(Uint8Array.of(first, second));
            if ([...letter].length === 1 && !codes.has(letter)) codes.set(letter, [first, second]);
        }
    }
    return Uint8Array.from([...(WORDS[label]?.[1] ?? '').repeat(3)].flatMap(letter => codes.get(letter) ?? []));
}

test.each(Object.entries(WORDS))('finds out %s', (label, [name, sentence]) => {
    const { text, encoding } = decodeText(sampleOf(label));
    expect([encoding, text.slice(0, sentence.length)]).toEqual([name, sentence]);
});

test.each(['utf-16le', 'utf-16be'])('finds out %s without a mark', label => {
    const units = [...'depth = 12\n'].map(letter => letter.charCodeAt(0));
    const swap = label === 'utf-16be';
    const wide = Uint8Array.from(units.flatMap(unit => (swap ? [unit >> 8, unit & 255] : [unit & 255, unit >> 8])));
    expect(decodeText(wide).text).toBe('depth = 12\n');
});

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
    ['UTF-16 without a mark', Uint8Array.from([...'two lines\n'].flatMap(c => [c.charCodeAt(0), 0])), true],
    ['Russian in one byte a letter', sampleOf('koi8-r'), true],
    ['an executable', bytes(0x7f, 0x45, 0x4c, 0x46), false],
    ['compressed data without control bytes', bytes(0xfd, 0x9a, 0xc3, 0xff, 0xe1, 0x88), false],
])('tells whether %s looks like text', (_, head, expected) => {
    expect(looksLikeText(head)).toBe(expected);
});
