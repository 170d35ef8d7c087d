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

interface Row {
    keys: string | string[];
    label?: string;
    command: MediaCommand;
}

const tenths = Array.from(
    { length: 10 },
    (_, i): Row => ({ keys: String(i), command: { do: 'seekTo', part: i / 10 } }),
);

/** The keys of both players. */
export const COMMANDS: readonly Row[] = [
    { keys: ['Space', 'K'], label: 'Play or pause', command: { do: 'toggle' } },
    { keys: 'J', label: 'Back 10 s', command: { do: 'seek', by: -10 } },
    { keys: 'L', label: 'Forward 10 s', command: { do: 'seek', by: 10 } },
    { keys: 'ArrowLeft', label: 'Back 5 s', command: { do: 'seek', by: -5 } },
    { keys: 'ArrowRight', label: 'Forward 5 s', command: { do: 'seek', by: 5 } },
    { keys: 'ArrowUp', label: 'Louder', command: { do: 'volume', by: 0.05 } },
    { keys: 'ArrowDown', label: 'Quieter', command: { do: 'volume', by: -0.05 } },
    { keys: 'Home', label: 'To the start', command: { do: 'seekTo', part: 0 } },
    { keys: 'M', label: 'Mute', command: { do: 'mute' } },
    { keys: 'C', label: 'Subtitles', command: { do: 'captions' } },
    { keys: 'F', label: 'Full screen', command: { do: 'fullscreen' } },
    { keys: '<', label: 'Slower', command: { do: 'speed', step: -1 } },
    { keys: '>', label: 'Faster', command: { do: 'speed', step: 1 } },
    ...tenths,
];

export function nextSpeed(current: number, step: 1 | -1): number {
    if (step > 0) return SPEEDS.find(s => s > current) ?? current;
    return SPEEDS.findLast(s => s < current) ?? current;
}

export function remainingTime(position: number, duration: number): string {
    return Number.isFinite(duration) ? `−${formatDuration(Math.floor(duration) - Math.floor(position))}` : '';
}
