import { formatDuration } from '../../format';

export type MediaCommand =
    | { do: 'toggle' }
    | { do: 'seek'; by: number }
    | { do: 'seekTo'; part: number }
    | { do: 'volume'; by: number }
    | { do: 'mute' }
    | { do: 'captions' }
    | { do: 'fullscreen' }
    | { do: 'speed'; step: 1 | -1 };

export const SPEEDS = [0.5, 0.75, 1, 1.25, 1.5, 1.75, 2, 3] as const;

export function mediaCommand(key: string): MediaCommand | undefined {
    if (/^[0-9]$/.test(key)) return { do: 'seekTo', part: Number(key) / 10 };
    switch (key.length === 1 ? key.toLowerCase() : key) {
        case ' ':
        case 'k':
            return { do: 'toggle' };
        case 'j':
            return { do: 'seek', by: -10 };
        case 'l':
            return { do: 'seek', by: 10 };
        case 'ArrowLeft':
            return { do: 'seek', by: -5 };
        case 'ArrowRight':
            return { do: 'seek', by: 5 };
        case 'ArrowUp':
            return { do: 'volume', by: 0.05 };
        case 'ArrowDown':
            return { do: 'volume', by: -0.05 };
        case 'Home':
            return { do: 'seekTo', part: 0 };
        case 'm':
            return { do: 'mute' };
        case 'c':
            return { do: 'captions' };
        case 'f':
            return { do: 'fullscreen' };
        case '<':
            return { do: 'speed', step: -1 };
        case '>':
            return { do: 'speed', step: 1 };
        default:
            return undefined;
    }
}

export function nextSpeed(current: number, step: 1 | -1): number {
    if (step > 0) return SPEEDS.find(s => s > current) ?? current;
    return SPEEDS.findLast(s => s < current) ?? current;
}

export function remainingTime(position: number, duration: number): string {
    return Number.isFinite(duration) ? `−${formatDuration(Math.floor(duration) - Math.floor(position))}` : '';
}
