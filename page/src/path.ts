import type { Listing } from './bridge';

// Archives separate what lies inside them by a slash between blanks.
const SEPARATOR = / \/ |\//;

/** The steps of a listing's path, outermost first. */
export const crumbsOf = (path: string): string[] => path.split(SEPARATOR).filter(step => step !== '');

/** The full path of an entry, written as the listing writes paths. */
export function entryPath(listing: Listing, name: string): string {
    const atArchiveRoot = listing.kind === 'archive' && listing.path.endsWith(listing.name);
    return listing.path + (atArchiveRoot ? ' / ' : '/') + name;
}

/** What to show of a path that is too long: the first step, null for the gap, and the last ones, `most` in all. */
export function foldCrumbs<T>(crumbs: readonly T[], most: number): (T | null)[] {
    if (crumbs.length <= most) return [...crumbs];
    const tail = Math.max(1, most - 2);
    return [crumbs[0]!, null, ...crumbs.slice(crumbs.length - tail)];
}
