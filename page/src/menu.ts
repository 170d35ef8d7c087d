import { el, icon } from './dom';

export interface MenuItem {
    label: string;
    /** Keys as drawn at the right. */
    keys?: string;
    /** A choice among others, and whether it is the one taken. */
    checked?: boolean;
    run(): void;
}

/** Items in groups, which a line parts. */
export type MenuGroups = readonly (readonly MenuItem[])[];

type Place = HTMLElement | { x: number; y: number };

const GAP = 6;
const EDGE = 8;

/** Opens a menu at a button or a point. It goes by Escape, Tab, a choice or a press elsewhere, and gives the focus back. */
export function openMenu(place: Place, label: string, groups: MenuGroups): void {
    const before = document.activeElement as HTMLElement | null;
    const over = new AbortController();
    const items: HTMLElement[] = [];
    const rows = groups
        .filter(group => group.length > 0)
        .flatMap((group, i) => [...(i > 0 ? [el('hr', {})] : []), ...group.map(item => makeItem(item))]);
    const menu = el('div', { class: 'card menu', role: 'menu', 'aria-label': label, tabindex: -1 }, ...rows);

    function close(): void {
        over.abort();
        menu.remove();
        if (place instanceof HTMLElement) place.setAttribute('aria-expanded', 'false');
        before?.focus({ preventScroll: true });
    }
    function makeItem(item: MenuItem): HTMLElement {
        const run = () => {
            close();
            item.run();
        };
        const checked = item.checked === undefined ? undefined : String(item.checked);
        const role = checked === undefined ? 'menuitem' : 'menuitemradio';
        const button = el(
            'button',
            { type: 'button', role, 'aria-checked': checked, tabindex: -1, onclick: run },
            item.checked === undefined ? null : item.checked ? icon('check', 's') : el('span', { class: 'i s' }),
            el('span', { class: 'what' }, item.label),
            item.keys ? el('span', { class: 'keys' }, item.keys) : null,
        );
        items.push(button);
        return button;
    }
    function key(event: KeyboardEvent): void {
        const at = items.indexOf(document.activeElement as HTMLElement);
        const to = { ArrowDown: at + 1, ArrowUp: at < 0 ? -1 : at - 1, Home: 0, End: -1 }[event.key];
        if (to !== undefined) items.at(to % items.length)?.focus();
        else if (event.key === 'Escape' || event.key === 'Tab') close();
        else if (event.key !== 'Enter' && event.key !== ' ') startingWith(event.key, at);
        event.stopPropagation();
        if (event.key !== 'Enter' && event.key !== ' ') event.preventDefault();
    }
    function startingWith(letter: string, at: number): void {
        if (letter.length !== 1) return;
        const order = [...items.slice(at + 1), ...items.slice(0, at + 1)];
        order.find(item => item.textContent?.toLowerCase().startsWith(letter.toLowerCase()))?.focus();
    }

    menu.addEventListener('keydown', key);
    menu.addEventListener('pointermove', event => {
        if (event.target instanceof Element) event.target.closest<HTMLElement>('button')?.focus();
    });
    const elsewhere = (event: Event) => {
        if (!menu.contains(event.target as Node)) close();
    };
    window.addEventListener('pointerdown', elsewhere, { signal: over.signal, capture: true });
    window.addEventListener('blur', close, { signal: over.signal });
    window.addEventListener('resize', close, { signal: over.signal });
    document.body.append(menu);
    if (place instanceof HTMLElement) place.setAttribute('aria-expanded', 'true');
    settle(menu, place);
    (items.find(item => item.getAttribute('aria-checked') === 'true') ?? items[0])?.focus();
}

/** Below the place, or above it where there is no room. */
function settle(menu: HTMLElement, place: Place): void {
    const box =
        place instanceof HTMLElement ? place.getBoundingClientRect() : new DOMRect(place.x, place.y - GAP, 0, 2 * GAP);
    const { offsetWidth: width, offsetHeight: height } = menu;
    const below = box.bottom + GAP,
        above = box.top - GAP - height;
    const top = below + height <= innerHeight - EDGE || above < EDGE ? below : above;
    const left = place instanceof HTMLElement && box.left + width > innerWidth - EDGE ? box.right - width : box.left;
    menu.style.top = `${Math.max(EDGE, Math.min(top, innerHeight - EDGE - height))}px`;
    menu.style.left = `${Math.max(EDGE, Math.min(left, innerWidth - EDGE - width))}px`;
}
