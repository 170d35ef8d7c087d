// A landscape from a field of heights, drawn column by column from the front to the back.

import { clamp, clouds, mix, noise, smooth } from './noise.mjs';

const FIELD = 2048;

/** Heights over the unit square, light and shadow on them. `height(u, v)` gives 0 to 1 and is sampled once per cell. */
function makeField(scene) {
    const heights = new Float32Array(FIELD * FIELD);
    for (let y = 0; y < FIELD; y++) {
        for (let x = 0; x < FIELD; x++) heights[y * FIELD + x] = scene.height(x / FIELD, y / FIELD);
    }
    const light = new Float32Array(FIELD * FIELD);
    const slope = new Float32Array(FIELD * FIELD);
    const [sx, sy, sz] = scene.sun;
    const steep = scene.relief * FIELD;
    for (let y = 1; y < FIELD - 1; y++) {
        for (let x = 1; x < FIELD - 1; x++) {
            const i = y * FIELD + x;
            const dx = (heights[i + 1] - heights[i - 1]) * 0.5 * steep;
            const dy = (heights[i + FIELD] - heights[i - FIELD]) * 0.5 * steep;
            const length = Math.hypot(dx, dy, 1);
            slope[i] = 1 / length;
            light[i] = Math.max(0, (-dx * sx - dy * sy + sz) / length) * sunlit(heights, x, y, scene, steep);
        }
    }
    return { heights, light, slope };
}

/** 1 in the sun, less behind a crest. */
function sunlit(heights, x, y, scene, steep) {
    const [sx, sy, sz] = scene.sun;
    const level = Math.hypot(sx, sy);
    const rise = sz / level / steep;
    let free = 1;
    for (let step = 2; step < 170; step += 1 + step * 0.06) {
        const px = Math.round(x + (sx / level) * step);
        const py = Math.round(y + (sy / level) * step);
        if (px < 0 || py < 0 || px >= FIELD || py >= FIELD) break;
        const gap = heights[y * FIELD + x] + rise * step - heights[py * FIELD + px];
        free = Math.min(free, 0.5 + gap * 60);
        if (free <= 0) return 0;
    }
    return clamp(free);
}

function sample(field, x, y) {
    const xi = clamp(Math.floor(x), 0, FIELD - 2);
    const yi = clamp(Math.floor(y), 0, FIELD - 2);
    const u = clamp(x - xi);
    const v = clamp(y - yi);
    const i = yi * FIELD + xi;
    return mix(mix(field[i], field[i + 1], u), mix(field[i + FIELD], field[i + FIELD + 1], u), v);
}

/** Draws the scene into linear RGB floats. */
export function drawMountains(scene, width, height, put) {
    const field = makeField(scene);
    const { camera } = scene;
    const horizon = height * camera.horizon;
    const scale = height * camera.zoom;
    for (let column = 0; column < width; column++) {
        const side = (column / width - 0.5) * camera.width;
        let top = height;
        for (let depth = camera.near; depth < camera.far; depth += 0.00035 + depth * 0.0011) {
            const u = camera.x + side * depth;
            const v = camera.y - depth;
            if (u < 0.002 || u > 0.998 || v < 0.002) continue;
            const x = u * FIELD;
            const y = v * FIELD;
            const ground = sample(field.heights, x, y);
            const line = Math.max(0, Math.floor(horizon - ((ground - camera.altitude) * scene.relief * scale) / depth));
            if (line >= top) continue;
            const point = { u, v, ground, depth, slope: sample(field.slope, x, y), light: sample(field.light, x, y) };
            const colour = scene.ground(point);
            for (let row = line; row < top; row++) put(column, row, colour);
            top = line;
            if (top === 0) break;
        }
        for (let row = 0; row < top; row++) put(column, row, scene.sky(column / width, row / height));
    }
}

/** Rock, snow and meadow by height and slope, lit, behind `haze` that thickens with distance. */
export function groundPainter(look) {
    return ({ u, v, ground, depth, slope, light }) => {
        const grain = clouds(u * 420, v * 420, 4, 71);
        const coarse = clouds(u * 60, v * 60, 3, 75);
        const rock = look.rock.map(c => c * (0.62 + 0.5 * grain + 0.25 * coarse));
        const green =
            smooth(look.treeLine + 0.07, look.treeLine - 0.05, ground + (coarse - 0.5) * 0.1) *
            smooth(0.45, 0.75, slope);
        const trees = look.green.map(c => c * (0.55 + 0.8 * noise(u * 900, v * 900, 79) * grain));
        const snow =
            smooth(look.snowLine - 0.05, look.snowLine + 0.1, ground + (grain - 0.5) * 0.16) *
            smooth(look.snowSlope - 0.1, look.snowSlope + 0.12, slope + (coarse - 0.5) * 0.2);
        const low = 1 + look.mist * smooth(0.42, 0.02, ground) * 2.2;
        const distance = 1 - Math.exp(-Math.max(0, depth - look.clear) * look.haze * low * (1.1 - ground * 0.5));
        return rock.map((_, i) => {
            const surface = mix(mix(rock[i], trees[i], green), look.snow[i] * (0.93 + 0.1 * grain), snow);
            const lit = surface * (look.ambient[i] + look.sunlight[i] * light);
            return mix(lit, look.air[i], distance);
        });
    };
}
