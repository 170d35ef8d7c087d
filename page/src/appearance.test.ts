import { expect, test } from 'vitest';
import { photoOf, schemeOf } from './appearance';

test.each<[string, unknown, 'dark' | 'light', number | null]>([
    ['the house colour', '#141614', 'dark', null],
    ['paper', '#F2EFE8', 'light', null],
    ['middle grey stays dark', '#969696', 'dark', null],
    ['a lighter grey turns light', '#9b9b9b', 'light', null],
    ['plum lends its hue', '#3a2440', 'dark', 318],
    ['yellow lends its hue', '#ffd000', 'light', 92],
    ['no colour', 'red; background: url(x)', 'dark', null],
    ['no text', 12, 'dark', null],
])('%s', (_, color, theme, hue) => {
    const scheme = schemeOf(color);
    expect(scheme.theme).toBe(theme);
    expect(scheme.tint).toMatch(/^#[0-9a-f]{6}$/);
    if (hue === null) expect(scheme.accentHue).toBeNull();
    else expect(((scheme.accentHue ?? NaN) + 360) % 360).toBeCloseTo(hue, -0.5);
});

test.each([
    ['a colour only', { bgMode: 'color', bgPreset: 'backgrounds/bg1.jpg' }, null],
    [
        'a preset',
        { bgMode: 'photo', bgPreset: 'backgrounds/bg1.jpg', bgAlpha: 40, bgBlur: 10 },
        { url: 'backgrounds/bg1.jpg', alpha: 0.4, blur: 4 },
    ],
    [
        "a photo of one's own",
        { bgMode: 'photo', bgCustomUrl: '/__file/T/background.png?v=1.0' },
        { url: '/__file/T/background.png?v=1.0', alpha: 1, blur: 0 },
    ],
    ['a photo that has gone', { bgMode: 'photo', bgPreset: '', bgCustomUrl: '' }, null],
    [
        'values out of range',
        { bgMode: 'photo', bgPreset: 'p', bgAlpha: 900, bgBlur: -3 },
        { url: 'p', alpha: 1, blur: 0 },
    ],
] as const)('photo: %s', (_, prefs, photo) => {
    expect(photoOf(prefs)).toEqual(photo);
});
