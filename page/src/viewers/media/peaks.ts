/** The loudest sample of each of `count` equal stretches, scaled so that the loudest of all is 1. */
export function peaksOf(samples: Float32Array, count: number): number[] {
    const peaks: number[] = [];
    for (let i = 0; i < count; i++) {
        const from = Math.floor((i * samples.length) / count);
        const to = Math.floor(((i + 1) * samples.length) / count);
        let peak = 0;
        for (let at = from; at < to; at++) peak = Math.max(peak, Math.abs(samples[at] ?? 0));
        peaks.push(peak);
    }
    const loudest = Math.max(0, ...peaks);
    return loudest > 0 ? peaks.map(peak => peak / loudest) : peaks;
}
