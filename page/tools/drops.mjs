// Drops of water on a pane of glass before soft light: each bends what lies behind it, upside down.

import { clamp, clouds, mix, noise, smooth } from './noise.mjs';

/** What lies behind the glass: dusk colours and lights out of focus. */
function behind(x, y) {
    const low = [0.006, 0.035, 0.045];
    const middle = [0.02, 0.15, 0.16];
    const high = [0.19, 0.42, 0.4];
    const t = clamp(1 - y + (clouds(x * 1.6 + 4, y * 1.9, 3, 5) - 0.5) * 0.7);
    const base = low.map((_, i) => (t < 0.5 ? mix(low[i], middle[i], t * 2) : mix(middle[i], high[i], t * 2 - 1)));
    const warm = smooth(0.52, 0, Math.hypot((x - 1.18) * 0.9, y - 0.22));
    return base.map((c, i) => c + warm * warm * [0.85, 0.5, 0.24][i] * 0.75);
}

function scatter() {
    const drops = [];
    let seed = 1;
    const random = () => noise(seed++ * 7.13, 0.37, 90);
    const spread = () => clamp((random() - 0.5) * 1.5 + 0.5);
    for (const [count, from, to] of [
        [16, 0.05, 0.085],
        [70, 0.02, 0.04],
        [420, 0.006, 0.016],
        [2600, 0.0014, 0.0045],
    ]) {
        for (let tries = 0, made = 0; made < count && tries < count * 30; tries++) {
            const r = from + (to - from) * random() * random();
            const drop = {
                x: spread() * 1.7 - 0.05,
                y: spread() * 1.1 - 0.05,
                r,
                tall: 1 + random() * 0.28,
                bend: random() * 6,
            };
            if (drops.some(d => Math.hypot(d.x - drop.x, (d.y - drop.y) / 1.15) < (d.r + r) * 1.04)) continue;
            drops.push(drop);
            made++;
        }
    }
    return drops;
}

export function drawDrops(width, height, put) {
    for (let row = 0; row < height; row++) {
        for (let column = 0; column < width; column++) put(column, row, behind(column / height, row / height));
    }
    for (const drop of scatter()) drawDrop(drop, width, height, put);
}

function drawDrop(drop, width, height, put) {
    const reach = drop.r * 1.5;
    const rows = [
        Math.max(0, Math.floor((drop.y - reach * 1.3) * height)),
        Math.min(height, Math.ceil((drop.y + reach * 1.4) * height)),
    ];
    const columns = [
        Math.max(0, Math.floor((drop.x - reach) * height)),
        Math.min(width, Math.ceil((drop.x + reach) * height)),
    ];
    const edge = 1.2 / (drop.r * height);
    for (let row = rows[0]; row < rows[1]; row++) {
        for (let column = columns[0]; column < columns[1]; column++) {
            const x = (column / height - drop.x) / drop.r;
            const y = (row / height - drop.y) / (drop.r * drop.tall);
            const angle = Math.atan2(y, x);
            const outline = 1 + 0.035 * Math.sin(angle * 2 + drop.bend) + 0.03 * Math.sin(angle * 3 + drop.bend * 2);
            const d = Math.hypot(x, y) / outline;
            const inside = smooth(1 + edge, 1 - edge, d);
            const under = behind(column / height, row / height);
            if (inside <= 0) {
                const shadow = 0.42 * smooth(1.42, 0.98, Math.hypot(x, y - 0.13) / outline);
                if (shadow > 0) put(column, row, under, shadow);
                continue;
            }
            put(column, row, inner(drop, x, y, d), 1 - inside, under);
        }
    }
}

/** The light that comes through a drop at (x, y) of its unit disc. */
function inner(drop, x, y, d) {
    const dome = Math.sqrt(Math.max(0, 1 - d * d));
    const lens = 1.35 + 2.4 * (1 - dome) ** 1.5;
    const seen = behind(drop.x - x * drop.r * lens * 2.6, clamp(drop.y - y * lens * (drop.r * 2.2 + 0.16), -0.3, 1.3));
    const rim = smooth(0.72, 1, d);
    const dark = 1 - 0.72 * rim * smooth(0.5, -0.8, y) - 0.3 * rim;
    const glow = smooth(0.25, 0.95, y) * smooth(1, 0.6, d) * 0.55;
    const spot = smooth(0.34, 0.08, Math.hypot(x + 0.33, (y + 0.42) * 1.15));
    const glint = smooth(0.13, 0.02, Math.hypot(x - 0.42, y - 0.5));
    return seen.map((c, i) => c * dark * 1.18 + glow * [0.42, 0.72, 0.66][i] * 0.6 + spot * 0.9 + glint * 0.35);
}
