export interface Size {
    width: number;
    height: number;
}

export interface Point {
    x: number;
    y: number;
}

const STEPS = [
    0.01, 0.02, 0.03, 0.05, 0.0833, 0.125, 0.1667, 0.25, 0.3333, 0.5, 0.6667, 0.75, 1, 1.25, 1.5, 2, 3, 4, 6, 8, 12, 16,
    24, 32,
];
export const SMALLEST_SCALE = 0.01;
export const LARGEST_SCALE = 32;

export function clampScale(scale: number): number {
    return Math.max(SMALLEST_SCALE, Math.min(LARGEST_SCALE, scale));
}

/** Small pictures are not blown up to fill the window. */
export function fitScale(picture: Size, room: Size): number {
    if (picture.width <= 0 || picture.height <= 0) return 1;
    return clampScale(Math.min(1, room.width / picture.width, room.height / picture.height));
}

export function nextStep(scale: number, direction: 1 | -1): number {
    // A step must be seen: from 33 % the next one is not 33.3 %.
    const tolerance = 1.06;
    if (direction > 0) return STEPS.find(s => s > scale * tolerance) ?? LARGEST_SCALE;
    return STEPS.findLast(s => s < scale / tolerance) ?? SMALLEST_SCALE;
}

/** The offset of the picture's centre from the room's centre that keeps the point under the pointer where it is. */
export function zoomAbout(offset: Point, point: Point, from: number, to: number): Point {
    const ratio = to / from;
    return { x: point.x - (point.x - offset.x) * ratio, y: point.y - (point.y - offset.y) * ratio };
}

/** A picture smaller than the room stays centred; a larger one never leaves a gap at an edge. */
export function clampOffset(offset: Point, picture: Size, room: Size, scale: number): Point {
    const spareX = Math.max(0, (picture.width * scale - room.width) / 2);
    const spareY = Math.max(0, (picture.height * scale - room.height) / 2);
    return {
        x: Math.max(-spareX, Math.min(spareX, offset.x)) + 0,
        y: Math.max(-spareY, Math.min(spareY, offset.y)) + 0,
    };
}

export function percent(scale: number): string {
    const value = scale * 100;
    return `${value < 10 ? Math.round(value * 10) / 10 : Math.round(value)}%`;
}
