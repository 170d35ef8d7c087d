import { el, icon } from './dom';
import { formatDuration } from './format';
import type { Kind } from './kinds';

const LONG_WAIT = 10_000;
const SVG = 'http://www.w3.org/2000/svg';

/**
 * The card shown while something is prepared; `since` is the time the work began, in the clock of performance.now().
 */
export function showBusy(
    host: HTMLElement,
    signal: AbortSignal,
    name: string,
    kind: Kind,
    since: number,
    cancel: () => void,
): void {
    const elapsed = el('span', { class: 'num', 'aria-hidden': 'true' });
    const long = el('span', { class: 'long' });
    const tick = () => {
        const passed = performance.now() - since;
        elapsed.textContent = formatDuration(passed / 1000);
        if (passed >= LONG_WAIT && !long.textContent) long.textContent = 'Large documents can take a few minutes.';
    };
    tick();
    const timer = setInterval(tick, 250);
    signal.addEventListener('abort', () => clearInterval(timer));
    host.append(
        el(
            'div',
            { class: 'stage' },
            el(
                'div',
                { class: 'card busy enter', role: 'status' },
                el('div', { class: 'ring' }, arc(), icon(kind.icon, kind.family)),
                el(
                    'div',
                    { class: 'what' },
                    el('b', { title: name }, name),
                    el('span', {}, 'Preparing preview · ', elapsed),
                ),
                el(
                    'div',
                    { class: 'end' },
                    long,
                    el(
                        'button',
                        { class: 'btn', type: 'button', onclick: cancel },
                        'Cancel ',
                        el('span', { class: 'kbd' }, 'Esc'),
                    ),
                ),
            ),
        ),
    );
}

function arc(): SVGSVGElement {
    const svg = document.createElementNS(SVG, 'svg');
    svg.setAttribute('class', 'arc');
    svg.setAttribute('viewBox', '0 0 52 52');
    svg.setAttribute('aria-hidden', 'true');
    for (let i = 0; i < 2; i++) {
        const circle = document.createElementNS(SVG, 'circle');
        for (const [name, value] of Object.entries({ cx: '26', cy: '26', r: '24' })) circle.setAttribute(name, value);
        svg.append(circle);
    }
    return svg;
}
