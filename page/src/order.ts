import type { Entry } from './bridge';
import { isArchive, kindOfEntry } from './kinds';

export type Column = 'name' | 'kind' | 'size' | 'modified';
export type Direction = 'ascending' | 'descending';

/** Where a column starts when it is chosen: names from A, but the largest and the newest first. */
export const firstDirection = (column: Column): Direction => (column === 'size' || column === 'modified' ? 'descending' : 'ascending');

/** Sorted by a column, folders first. The shell's order is the order of names and decides between equals. */
export function sortEntries(entries: readonly Entry[], column: Column, direction: Direction): Entry[] {
    const sign = direction === 'ascending' ? 1 : -1;
    const rows = entries.map((entry, place) => ({ entry, place, key: keyOf(entry, column, place) }));
    rows.sort((a, b) =>
        Number(b.entry.isDirectory) - Number(a.entry.isDirectory)
        || sign * (a.key < b.key ? -1 : a.key > b.key ? 1 : 0)
        || a.place - b.place);
    return rows.map(row => row.entry);
}

function keyOf(entry: Entry, column: Column, place: number): string | number {
    switch (column) {
        case 'name': return place;
        case 'kind': return kindOfEntry(entry).label;
        case 'size': return entry.size ?? -1;
        case 'modified': return entry.modified;
    }
}

/** The entry that typed letters lead to, searched from `from` on and round; -1 when no name starts with them. */
export function findTyped(entries: readonly Entry[], typed: string, from: number): { index: number; place: number; matches: number } {
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
    return entries.flatMap((entry, index) => (entry.name.slice(0, wanted.length * 2).toLocaleLowerCase().startsWith(wanted) ? [index] : []));
}

/** The documents of a listing in its order: what Left and Right step through. */
export const documentsOf = (entries: readonly Entry[]): Entry[] =>
    entries.filter(entry => !entry.isDirectory && !entry.blockedReason && !isArchive(entry.ext));
