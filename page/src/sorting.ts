import type { Entry } from './bridge';
import { isArchive, kindOfEntry } from './kinds';

export type Column = 'name' | 'kind' | 'size' | 'modified';
export type Direction = 'ascending' | 'descending';

/** Where a column starts when it is chosen: names from A, but the largest and the newest first. */
export const firstDirection = (column: Column): Direction =>
    column === 'size' || column === 'modified' ? 'descending' : 'ascending';

/** Sorted by a column, folders first. The shell's order is the order of names and decides between equals. */
export function sortEntries(entries: readonly Entry[], column: Column, direction: Direction): Entry[] {
    const folders = entries.filter(entry => entry.isDirectory),
        files = entries.filter(entry => !entry.isDirectory);
    return [...sortAlike(folders, column, direction), ...sortAlike(files, column, direction)];
}

function sortAlike(entries: Entry[], column: Column, direction: Direction): Entry[] {
    if (column === 'name') return direction === 'ascending' ? entries : entries.reverse();
    const sign = direction === 'ascending' ? 1 : -1,
        keyOf = KEYS[column];
    return entries
        .map(entry => ({ entry, key: keyOf(entry) }))
        .sort((a, b) => sign * (a.key < b.key ? -1 : a.key > b.key ? 1 : 0))
        .map(({ entry }) => entry);
}

const KEYS: Record<Exclude<Column, 'name'>, (entry: Entry) => string | number> = {
    kind: entry => kindOfEntry(entry).label,
    size: entry => entry.size ?? -1,
    modified: entry => entry.modified,
};

/** The entry that typed letters lead to, searched from `from` on and round; -1 when no name starts with them. */
export function findTyped(
    entries: readonly Entry[],
    typed: string,
    from: number,
): { index: number; place: number; matches: number } {
    const matches = startingWith(entries, typed);
    // The same letter again and again walks through the names that start with it.
    if (matches.length === 0 && typed.length > 1 && new Set(typed).size === 1) {
        const single = startingWith(entries, typed.slice(0, 1));
        const at = single.findIndex(index => index > from);
        const place = at < 0 ? 0 : at;
        return { index: single[place] ?? -1, place, matches: single.length };
    }
    const at = matches.findIndex(index => index >= from);
    const place = at < 0 ? 0 : at;
    return { index: matches[place] ?? -1, place, matches: matches.length };
}

function startingWith(entries: readonly Entry[], typed: string): number[] {
    const wanted = typed.toLocaleLowerCase();
    return entries.flatMap((entry, index) =>
        entry.name
            .slice(0, wanted.length * 2)
            .toLocaleLowerCase()
            .startsWith(wanted)
            ? [index]
            : [],
    );
}

/** The documents of a listing in its order: what Left and Right step through. */
export const documentsOf = (entries: readonly Entry[]): Entry[] =>
    entries.filter(entry => !entry.isDirectory && !entry.blockedReason && !isArchive(entry.ext));

/** The entries whose name holds the text, in whatever case. */
export function filterByName(entries: readonly Entry[], text: string): readonly Entry[] {
    const wanted = text.toLocaleLowerCase();
    return wanted ? entries.filter(entry => entry.name.toLocaleLowerCase().includes(wanted)) : entries;
}
