/**
 * Follows a pointer from its press to its release: `move` is told of each movement, `end` once, also when the engine takes the
 * pointer away.
 */
export function followPointer(
    element: HTMLElement,
    press: PointerEvent,
    move: (event: PointerEvent) => void,
    end: () => void = () => undefined,
): void {
    const over = new AbortController();
    element.setPointerCapture(press.pointerId);
    element.addEventListener('pointermove', move, { signal: over.signal });
    for (const type of ['pointerup', 'pointercancel', 'lostpointercapture']) {
        element.addEventListener(
            type,
            () => {
                over.abort();
                end();
            },
            { signal: over.signal },
        );
    }
}
