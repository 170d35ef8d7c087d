// Makes the four photos that come with the program: `node page/tools/backgrounds.mjs [NUMBER...]`. They are drawn here,
// from nothing but numbers, so they may be used by anyone. Needs the `vips` program for the JPEG files.

import { execFileSync } from 'node:child_process';
import { mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';

import { drawDrops } from './drops.mjs';
import { drawMountains, groundPainter } from './mountains.mjs';
import { clamp, clouds, mix, ridges, smooth } from './noise.mjs';

const WIDTH = 2560;
const HEIGHT = 1600;
const SAMPLES = 2; // a side, for smooth crests

/** A sky of three colours from the zenith down, with thin clouds and the glow of the sun. */
function skyPainter({ zenith, middle, low, sun, glow, cloud, amount, seed }) {
    return (x, y) => {
        const t = clamp(y / 0.62);
        const base = zenith.map((_, i) =>
            t < 0.55 ? mix(zenith[i], middle[i], t / 0.55) : mix(middle[i], low[i], (t - 0.55) / 0.45),
        );
        const near = Math.exp(-Math.hypot((x - sun[0]) * 1.6, y - sun[1]) * 4.2);
        const wisps =
            smooth(0.5, 0.78, clouds(x * 2.6 + clouds(x * 5, y * 16, 3, seed) * 0.7, y * 9 + x * 1.3, 6, seed + 9)) *
            amount *
            smooth(0.62, 0.25, y);
        return base.map((c, i) => mix(c + near * glow[i], cloud[i], wisps));
    };
}

/** Mountains that rise behind a foreground: 0 before `from`, 1 beyond `to`, seen from the camera. */
const beyond = (from, to, v) => smooth(1 - from, 1 - to, v);

const SCENES = {
    // Alps: rugged crests at the end of the day, one behind the other.
    1: (() => {
        const warp = (u, v) => [
            u + (clouds(u * 7, v * 7, 4, 13) - 0.5) * 0.11,
            v + (clouds(u * 7 + 5, v * 7, 4, 17) - 0.5) * 0.11,
        ];
        return {
            relief: 0.34,
            sun: [0.86, 0.12, 0.36],
            height: (u, v) => {
                const [x, y] = warp(u, v);
                const wide = clouds(u * 3.3 + 2, v * 3.3 + 5, 3, 11);
                const crest = ridges(x * 5.6 + 7, y * 5.6 + 1, 9, 21);
                return crest * (0.25 + wide * 0.85) * mix(0.3, 1.12, beyond(0.2, 0.6, v));
            },
            camera: { x: 0.5, y: 1, altitude: 0.74, near: 0.2, far: 0.98, width: 1.0, zoom: 0.95, horizon: 0.34 },
            ground: groundPainter({
                rock: [0.085, 0.08, 0.09],
                green: [0.02, 0.032, 0.028],
                snow: [0.8, 0.84, 0.95],
                snowLine: 0.3,
                snowSlope: 0.36,
                treeLine: 0.14,
                ambient: [0.17, 0.24, 0.42],
                sunlight: [2.3, 1.25, 0.68],
                air: [0.5, 0.42, 0.5],
                mist: 0.6,
                clear: 0.24,
                haze: 1.15,
            }),
            sky: skyPainter({
                zenith: [0.06, 0.13, 0.3],
                middle: [0.26, 0.34, 0.52],
                low: [0.75, 0.53, 0.45],
                sun: [0.9, 0.3],
                glow: [0.8, 0.45, 0.2],
                cloud: [0.95, 0.66, 0.55],
                amount: 0.5,
                seed: 31,
            }),
        };
    })(),
    // Mountain Valley: green slopes on both sides, morning haze between them.
    2: {
        relief: 0.3,
        sun: [-0.75, 0.1, 0.5],
        height: (u, v) => {
            const bend = 0.5 + 0.05 * Math.sin(v * 9 + 0.4);
            const away = Math.abs(u - bend) + (clouds(u * 9, v * 9, 4, 49) - 0.5) * 0.07;
            const walls = smooth(0.02, 0.34, away);
            const x = u + (clouds(u * 6, v * 6, 4, 53) - 0.5) * 0.12;
            const crest = ridges(x * 5 + 3, v * 5 + 8, 9, 41);
            const closing = beyond(0.72, 0.98, v) * 0.5;
            const low = mix(0.35, 1, beyond(0.22, 0.5, v));
            return (
                0.03 * clouds(u * 30, v * 30, 3, 45) +
                low * (walls * (0.16 + 0.62 * crest) + closing * (0.1 + 0.6 * crest))
            );
        },
        camera: { x: 0.5, y: 1, altitude: 0.52, near: 0.14, far: 0.98, width: 1.0, zoom: 0.95, horizon: 0.36 },
        ground: groundPainter({
            rock: [0.15, 0.145, 0.13],
            green: [0.05, 0.105, 0.025],
            snow: [0.85, 0.88, 0.92],
            snowLine: 0.6,
            snowSlope: 0.5,
            treeLine: 0.46,
            ambient: [0.26, 0.36, 0.44],
            sunlight: [1.45, 1.2, 0.78],
            air: [0.5, 0.6, 0.62],
            mist: 0.4,
            clear: 0.28,
            haze: 1.05,
        }),
        sky: skyPainter({
            zenith: [0.13, 0.32, 0.58],
            middle: [0.35, 0.55, 0.72],
            low: [0.78, 0.82, 0.76],
            sun: [0.14, 0.28],
            glow: [0.55, 0.45, 0.26],
            cloud: [0.95, 0.96, 0.96],
            amount: 0.7,
            seed: 51,
        }),
    },
    // Snow Peaks: high and cold, under a deep sky.
    3: {
        relief: 0.36,
        sun: [0.72, 0.42, 0.46],
        height: (u, v) => {
            const x = u + (clouds(u * 6, v * 6, 4, 63) - 0.5) * 0.1;
            const wide = clouds(u * 3 + 9, v * 3 + 3, 3, 61);
            const crest = ridges(x * 4.6 + 1.3, v * 4.6 + 6, 10, 65);
            const summit = Math.exp(-((u - 0.6) ** 2 * 60 + (v - 0.3) ** 2 * 45));
            return clamp(
                crest * (0.2 + wide * 0.55) * mix(0.5, 1, beyond(0.25, 0.7, v)) + summit * (0.3 + 0.42 * crest),
            );
        },
        camera: { x: 0.5, y: 1, altitude: 0.56, near: 0.24, far: 0.98, width: 1.0, zoom: 0.95, horizon: 0.46 },
        ground: groundPainter({
            rock: [0.09, 0.1, 0.12],
            green: [0.03, 0.04, 0.04],
            snow: [0.88, 0.92, 0.98],
            snowLine: -0.12,
            snowSlope: 0.33,
            treeLine: 0,
            ambient: [0.22, 0.34, 0.6],
            sunlight: [1.2, 1.06, 0.86],
            air: [0.45, 0.6, 0.82],
            mist: 0.35,
            clear: 0.3,
            haze: 0.8,
        }),
        sky: skyPainter({
            zenith: [0.02, 0.08, 0.26],
            middle: [0.08, 0.24, 0.52],
            low: [0.5, 0.68, 0.86],
            sun: [0.92, 0.12],
            glow: [0.3, 0.3, 0.26],
            cloud: [0.93, 0.95, 0.98],
            amount: 0.4,
            seed: 81,
        }),
    },
};

const curve = c => {
    const toned = 1 - Math.exp(-c * 1.45);
    return Math.round(255 * clamp(toned <= 0.0031308 ? 12.92 * toned : 1.055 * toned ** (1 / 2.4) - 0.055));
};

function draw(number) {
    const [w, h] = [WIDTH * SAMPLES, HEIGHT * SAMPLES];
    const picture = new Float32Array(w * h * 3);
    // The shade darkens what is there; with `under`, what is given is mixed with it.
    const put = (x, y, colour, share = 0, under = null) => {
        const i = (y * w + x) * 3;
        for (let k = 0; k < 3; k++) {
            if (under) picture[i + k] = mix(colour[k], under[k], share);
            else if (share) picture[i + k] *= 1 - share;
            else picture[i + k] = colour[k];
        }
    };
    if (number === 4) drawDrops(w, h, put);
    else drawMountains(SCENES[number], w, h, put);
    const out = Buffer.alloc(WIDTH * HEIGHT * 3);
    for (let y = 0; y < HEIGHT; y++) {
        for (let x = 0; x < WIDTH; x++) {
            for (let k = 0; k < 3; k++) {
                let sum = 0;
                for (let s = 0; s < SAMPLES * SAMPLES; s++) {
                    sum += picture[((y * SAMPLES + (s >> 1)) * w + x * SAMPLES + (s & 1)) * 3 + k];
                }
                out[(y * WIDTH + x) * 3 + k] = curve(sum / (SAMPLES * SAMPLES));
            }
        }
    }
    return out;
}

const folder = fileURLToPath(new URL('../public/backgrounds/', import.meta.url));
const work = mkdtempSync(join(tmpdir(), 'backgrounds-'));
try {
    const asked = process.argv.slice(2).map(Number);
    for (const number of asked.length > 0 ? asked : [1, 2, 3, 4]) {
        const plain = join(work, 'picture.ppm');
        writeFileSync(plain, Buffer.concat([Buffer.from(`P6\n${WIDTH} ${HEIGHT}\n255\n`), draw(number)]));
        const quality = number === 4 ? 82 : 72;
        execFileSync('vips', [
            'jpegsave',
            plain,
            join(folder, `bg${number}.jpg`),
            `--Q=${quality}`,
            '--optimize-coding',
            '--interlace',
            '--strip',
        ]);
    }
} finally {
    rmSync(work, { recursive: true });
}
