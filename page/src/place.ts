import type { Browser } from './browser';
import { el, iconButton } from './dom';
import { entryPath } from './path';
import type { TrailSpec } from './trail';

/** The path strip of a container: of its list, or of a document opened from it. Null outside of any. */
export function placeOf(
    browser: Browser,
    token: string | undefined,
    document: string | undefined,
    copyPath: (path: string) => void,
): TrailSpec | null {
    if (!token) return null;
    const inDocument = document !== undefined,
        { listing } = browser;
    const known = listing?.token === token ? browser.levels : [];
    const crumbs: TrailSpec['crumbs'] = known.map(({ label, above }) =>
        above === null ? { label } : { label, open: () => browser.climb(above) },
    );
    if (inDocument) crumbs.push({ label: document });
    const canRise = inDocument || listing?.parentId != null;
    const up = inDocument
        ? { title: 'Back to the list (Alt+Up)', go: () => browser.refresh() }
        : { title: 'Up one level (Alt+Up)', go: () => browser.up() };
    const path = listing && (inDocument ? entryPath(listing, document) : listing.path);
    const copy = path ? [iconButton('copy', 'Copy path', () => copyPath(path))] : [];
    const tools = inDocument
        ? [...steps(browser), ...copy]
        : [...copy, iconButton('refresh', 'Refresh (F5)', () => browser.refresh())];
    return canRise ? { crumbs, up, tools } : { crumbs, tools };
}

/** To the documents before and after the shown one. */
function steps(browser: Browser): HTMLElement[] {
    const at = browser.position;
    if (!at) return [];
    const before = iconButton('chevron-left', 'Previous document (←)', () => browser.step(-1));
    const after = iconButton('chevron-right', 'Next document (→)', () => browser.step(1));
    before.disabled = at.index === 0;
    after.disabled = at.index === at.count - 1;
    const count = el('span', { class: 'hint num' }, `${at.index + 1} of ${at.count}`);
    return [before, count, after, el('span', { class: 'sep' })];
}
