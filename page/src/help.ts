import { el, iconButton } from './dom';
import { capsOf, type KeyGroup, keysOf } from './keys';

/** The keys that count now, from the tables that answer them. */
export function showHelp(groups: readonly KeyGroup[]): void {
    const before = document.activeElement as HTMLElement | null;
    const sections = groups
        .map(({ title, table }) => ({ title, rows: table.filter(row => row.label) }))
        .filter(({ rows }) => rows.length > 0)
        .map(({ title, rows }) =>
            el(
                'section',
                {},
                el('h2', {}, title),
                el('dl', {}, ...rows.flatMap(row => [el('dt', {}, ...capsFor(keysOf(row))), el('dd', {}, row.label)])),
            ),
        );
    const dialog = el(
        'dialog',
        { class: 'card help', 'aria-label': 'Keys' },
        el(
            'header',
            {},
            el('h1', {}, 'Keys'),
            iconButton('close', 'Close (Esc)', () => dialog.close(), 's'),
        ),
        el('div', { class: 'columns' }, ...sections),
    );
    dialog.addEventListener('keydown', event => {
        event.stopPropagation();
        if (event.key === 'F1' || event.key === '?') {
            event.preventDefault();
            dialog.close();
        }
    });
    dialog.addEventListener('click', event => event.target === dialog && dialog.close());
    dialog.addEventListener('close', () => {
        dialog.remove();
        before?.focus({ preventScroll: true });
    });
    document.body.append(dialog);
    dialog.showModal();
}

/** At most two ways to press the same; more would hide what is said. */
function capsFor(keys: readonly string[]): (HTMLElement | string)[] {
    return keys
        .slice(0, 2)
        .flatMap((written, i) => [
            ...(i > 0 ? [' or '] : []),
            ...capsOf(written).map(cap => el('span', { class: 'kbd' }, cap)),
        ]);
}
