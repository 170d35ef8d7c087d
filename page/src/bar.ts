import { el, toolbar } from './dom';

const IDLE = 2500;

/**
 * A floating bar at the lower edge of a view: it goes after a while without pointer or key, but not under the pointer
 * or the focus.
 */
export function makeBar(host: HTMLElement, signal: AbortSignal, groups: HTMLElement[][]): HTMLElement {
    const parts = groups.flatMap((group, i) => (i > 0 ? [el('span', { class: 'sep' }), ...group] : group));
    const bar = toolbar(el('div', { class: 'capsule bar enter' }, ...parts), 'View');
    const dock = el('div', { class: 'dock' }, bar);
    let timer = 0;
    const settle = () => {
        if (bar.matches(':hover, :has(:focus-visible)')) wake();
        else dock.classList.add('away');
    };
    const wake = () => {
        dock.classList.remove('away');
        clearTimeout(timer);
        timer = window.setTimeout(settle, IDLE);
    };
    for (const type of ['pointermove', 'pointerdown', 'keydown', 'wheel', 'focusin']) {
        window.addEventListener(type, wake, { signal, passive: true, capture: true });
    }
    signal.addEventListener('abort', () => clearTimeout(timer));
    wake();
    host.append(dock);
    return bar;
}
