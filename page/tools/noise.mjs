// Value noise with a fixed seed, so that the same pictures come out on every machine.

/** Deterministic random numbers in [0, 1) from an integer lattice point. */
function lattice(x, y, seed) {
    let h = Math.imul(x, 374761393) ^ Math.imul(y, 668265263) ^ Math.imul(seed, 974634599);
    h = Math.imul(h ^ (h >>> 13), 1274126177);
    h = Math.imul(h ^ (h >>> 16), 2246822519);
    return ((h ^ (h >>> 15)) >>> 0) / 4294967296;
}

const fade = t => t * t * t * (t * (t * 6 - 15) + 10);
export const mix = (a, b, t) => a + (b - a) * t;
export const clamp = (v, low = 0, high = 1) => Math.min(high, Math.max(low, v));
export const smooth = (from, to, v) => {
    const t = clamp((v - from) / (to - from));
    return t * t * (3 - 2 * t);
};

/** Smooth noise in [0, 1]. */
export function noise(x, y, seed) {
    const xi = Math.floor(x);
    const yi = Math.floor(y);
    const u = fade(x - xi);
    const v = fade(y - yi);
    return mix(
        mix(lattice(xi, yi, seed), lattice(xi + 1, yi, seed), u),
        mix(lattice(xi, yi + 1, seed), lattice(xi + 1, yi + 1, seed), u),
        v,
    );
}

/** Octaves of noise in [0, 1]; each is turned a little, so that no grid shows. */
export function clouds(x, y, octaves, seed) {
    let sum = 0;
    let amplitude = 0.5;
    let total = 0;
    for (let i = 0; i < octaves; i++) {
        sum += amplitude * noise(x, y, seed + i);
        total += amplitude;
        amplitude *= 0.5;
        [x, y] = [x * 1.6 - y * 1.2 + 17.3, x * 1.2 + y * 1.6 - 9.1];
    }
    return sum / total;
}

/** Octaves with sharp crests and worn flanks, as mountains have them, in [0, 1]. */
export function ridges(x, y, octaves, seed) {
    let sum = 0;
    let amplitude = 0.5;
    let total = 0;
    let weight = 1;
    for (let i = 0; i < octaves; i++) {
        let crest = 1 - Math.abs(2 * noise(x, y, seed + i) - 1);
        crest = crest * crest * weight;
        weight = clamp(crest * 1.9);
        sum += amplitude * crest;
        total += amplitude;
        amplitude *= 0.5;
        [x, y] = [x * 1.6 - y * 1.2 + 3.7, x * 1.2 + y * 1.6 + 11.9];
    }
    return sum / total;
}
