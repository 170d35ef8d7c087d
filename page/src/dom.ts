type Child = Node | string | null | undefined | false;
type Value = string | number | boolean | null | undefined | ((event: never) => void);

/**
 * Properties of an element: `onclick`-like functions become listeners, true sets an empty attribute, false or null
 * leaves it out.
 */
export type Props = Record<string, Value>;

/** Builds an element. Strings always become text, never markup. */
export function el<K extends keyof HTMLElementTagNameMap>(
    tag: K,
    props: Props = {},
    ...children: Child[]
): HTMLElementTagNameMap[K] {
    const element = document.createElement(tag);
    for (const [key, value] of Object.entries(props)) {
        if (typeof value === 'function') element.addEventListener(key.slice(2), value as EventListener);
        else if (value === true) element.setAttribute(key, '');
        else if (value !== false && value !== null && value !== undefined) element.setAttribute(key, String(value));
    }
    element.append(
        ...children.filter((child): child is Node | string => child !== null && child !== undefined && child !== false),
    );
    return element;
}

const SVG = 'http://www.w3.org/2000/svg';

/** A symbol of the sprite. `cls` takes "s" for the 16 px size and a family ("folder", "image", ...) for its colour. */
export function icon(name: string, cls = ''): SVGSVGElement {
    const svg = document.createElementNS(SVG, 'svg');
    svg.setAttribute('class', `i ${cls}`.trim());
    svg.setAttribute('aria-hidden', 'true');
    const use = document.createElementNS(SVG, 'use');
    use.setAttribute('href', `#${name}`);
    svg.append(use);
    return svg;
}

/** A round button with a symbol only; the title is its accessible name too. */
export function iconButton(name: string, title: string, onclick: () => void, cls = ''): HTMLButtonElement {
    return el('button', { class: 'btn only', type: 'button', title, 'aria-label': title, onclick }, icon(name, cls));
}

/** True while keys belong to a text field, so that single-letter shortcuts stay out of its way. */
export function isEditable(target: EventTarget | null): boolean {
    if (!(target instanceof HTMLElement)) return false;
    const editor = target.isContentEditable && target.ariaReadOnly !== 'true';
    return editor || target.matches('input, textarea, select');
}

/** Makes a capsule one Tab stop; Left, Right, Home and End move between its buttons. */
export function toolbar(element: HTMLElement, label: string): HTMLElement {
    element.setAttribute('role', 'toolbar');
    element.setAttribute('aria-label', label);
    const stops = () =>
        [...element.querySelectorAll<HTMLElement>('button:not([disabled]), input, [tabindex]')].filter(
            stop => stop.offsetParent !== null,
        );
    const rove = (current: HTMLElement | undefined) => {
        for (const stop of stops()) stop.tabIndex = stop === current ? 0 : -1;
    };
    element.addEventListener('focusin', event => rove(event.target as HTMLElement));
    element.addEventListener('keydown', event => {
        if (isEditable(event.target) || event.altKey || event.ctrlKey || event.metaKey) return;
        const all = stops(),
            at = all.indexOf(event.target as HTMLElement);
        const to = { ArrowLeft: at - 1, ArrowRight: at + 1, Home: 0, End: all.length - 1 }[event.key];
        if (to === undefined || at < 0) return;
        event.preventDefault();
        all[Math.max(0, Math.min(all.length - 1, to))]?.focus();
    });
    queueMicrotask(() => rove(stops()[0]));
    return element;
}
