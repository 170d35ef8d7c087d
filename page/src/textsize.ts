import type { Keymap } from './keys';

const STEPS = [0.5, 0.67, 0.75, 0.85, 1, 1.15, 1.3, 1.5, 1.75, 2, 2.5, 3];
const WHEEL_STEP = 60;

/** The next size up or down from any size. */
export function nextSize(size: number, direction: 1 | -1): number {
    const next = direction > 0 ? STEPS.find(step => step > size + 0.01) : STEPS.findLast(step => step < size - 0.01);
    return next ?? size;
}

/** One size for all views of text; it stays from one document to the next. */
export class TextSize {
    private size = 1;

    constructor(private readonly told: (text: string) => void) {}

    /** Makes an element follow the size; returns the keys for it. */
    follow(element: HTMLElement, signal: AbortSignal): Keymap {
        const show = () => element.style.setProperty('zoom', String(this.size));
        const set = (size: number) => {
            this.size = size;
            show();
            this.told(`Text size ${Math.round(size * 100)}%`);
        };
        show();
        this.wheel(element, signal, direction => set(nextSize(this.size, direction)));
        this.pinch(element, signal, set);
        return [
            { keys: ['Ctrl++', 'Ctrl+='], label: 'Larger text', run: () => set(nextSize(this.size, 1)) },
            { keys: 'Ctrl+-', label: 'Smaller text', run: () => set(nextSize(this.size, -1)) },
            { keys: 'Ctrl+0', label: 'Usual size', run: () => set(1) },
        ];
    }

    private wheel(element: HTMLElement, signal: AbortSignal, step: (direction: 1 | -1) => void): void {
        let rest = 0;
        const turn = (event: WheelEvent) => {
            if (!event.ctrlKey) return;
            event.preventDefault();
            rest += event.deltaY;
            if (Math.abs(rest) < WHEEL_STEP) return;
            step(rest < 0 ? 1 : -1);
            rest = 0;
        };
        element.addEventListener('wheel', turn, { signal, passive: false, capture: true });
    }

    /** The engine reports a pinch on a touch pad as gesture events. */
    private pinch(element: HTMLElement, signal: AbortSignal, set: (size: number) => void): void {
        let from = 1;
        const begin = (event: Event) => {
            event.preventDefault();
            from = this.size;
        };
        const change = (event: Event) => {
            event.preventDefault();
            const size = from * (event as Event & { scale: number }).scale;
            set(Math.max(STEPS[0]!, Math.min(STEPS.at(-1)!, size)));
        };
        element.addEventListener('gesturestart', begin, { signal });
        element.addEventListener('gesturechange', change, { signal });
    }
}
