import { expect, test } from 'vitest';
import { formatDate, formatDuration, formatSize } from './format';

test.each([
    [null, '—'],
    [0, '0 bytes'],
    [1, '1 byte'],
    [999, '999 bytes'],
    [1000, '1.0 KB'],
    [9960, '10 KB'],
    [48_000, '48 KB'],
    [999_499, '999 KB'],
    [999_500, '1.0 MB'],
    [4_800_000, '4.8 MB'],
    [99_940_000, '99.9 MB'],
    [256_000_000, '256 MB'],
    [1.5e9, '1.5 GB'],
    [3e15, '3000 TB'],
])('size of %s bytes', (bytes, text) => {
    expect(formatSize(bytes)).toBe(text);
});

test.each([
    [0, '0:00'],
    [14.9, '0:14'],
    [3723, '1:02:03'],
    [NaN, '0:00'],
    [-3, '0:00'],
])('%s seconds', (seconds, text) => {
    expect(formatDuration(seconds)).toBe(text);
});

test('dates: local time, a dash for what is no date', () => {
    expect(formatDate(new Date(2026, 10, 14, 9, 12).getTime())).toBe('14 Nov 2026, 09:12');
    expect([0, -5, NaN, 1e300].map(formatDate)).toEqual(['—', '—', '—', '—']);
});
