export interface Sheet {
    name: string;
    rows: TableRows;
    /** Rows that the file has beyond those that are held. */
    left: number;
}

export type TableFormat = 'csv' | 'tsv' | 'workbook';

export interface TableJob {
    bytes: Uint8Array;
    format: TableFormat;
    /** As the engine's decoder calls it; found out when absent. */
    encoding?: string;
}

export type TableRows = string[][];

/** Rows that are held at most, the titles not counted. */
export const MOST_ROWS = 1_000_000;

const NUMBER = /^[-+−]?(\d{1,3}([, .'\u00a0\u2009\u202f]\d{3})+|\d+)?([.,]\d+)?([eE][-+]?\d+)?\s?%?$/;
const CURRENCY = '(?:[€$£¥₹₽₩₺]|CHF|kr|zł|Kč|[A-Z]{3})';
const BEFORE = new RegExp(`^([-+−]?)\\s?${CURRENCY}\\s?`);
const AFTER = new RegExp(`\\s?${CURRENCY}$`);
const SAMPLE = 200;
const CHARACTER_WIDTH = 7.4;
const NARROWEST = 64;
const WIDEST = 360;

/** Numbers as people write them: with groups, a percentage, a currency on either side, or in brackets when negative. */
export function isNumber(text: string): boolean {
    let plain = text.trim();
    if (plain.startsWith('(') && plain.endsWith(')')) plain = plain.slice(1, -1).trim();
    if (!/\d/.test(plain)) return false;
    const bare = BEFORE.test(plain) ? plain.replace(BEFORE, '$1') : plain.replace(AFTER, '');
    return NUMBER.test(plain) || NUMBER.test(bare);
}

/** Without the empty rows at the end, which a sheet's claimed size leaves there. */
export function trimmed(rows: TableRows): TableRows {
    const last = rows.findLastIndex(row => row.some(cell => cell !== ''));
    return rows.slice(0, last + 1);
}

/** "A", "Z", "AA": the name of a column by its zero-based place. */
export function columnName(index: number): string {
    let name = '';
    for (let rest = index; rest >= 0; rest = Math.floor(rest / 26) - 1) {
        name = String.fromCharCode(65 + (rest % 26)) + name;
    }
    return name;
}

/** A first row of words above other rows names the columns. A few may have no title; no two have the same. */
export function hasHeader(rows: TableRows): boolean {
    const [first, second] = rows;
    if (!first || !second) return false;
    const words = first.filter(cell => cell.trim() !== '');
    const mayMiss = Math.max(first.length > 2 ? 1 : 0, Math.floor(first.length / 4));
    const isNamed = words.length > 0 && words.length >= first.length - mayMiss;
    return isNamed && words.every(cell => !isNumber(cell)) && new Set(words).size === words.length;
}

export interface Column {
    title: string;
    width: number;
    numeric: boolean;
}

export function columnsOf(rows: TableRows, titles: string[] | undefined, most: number): Column[] {
    const head = rows.slice(0, SAMPLE);
    const count = Math.min(most, Math.max(titles?.length ?? 0, ...head.map(row => row.length), 0));
    return Array.from({ length: count }, (_, i) => {
        const title = titles?.[i]?.trim() || columnName(i);
        const cells = head.map(row => row[i] ?? '').filter(cell => cell !== '');
        // Titles are set in bold.
        const longest = Math.max(title.length * 1.2, ...cells.map(cell => cell.length), 0);
        return {
            title,
            width: Math.round(Math.max(NARROWEST, Math.min(WIDEST, longest * CHARACTER_WIDTH + 24))),
            numeric: cells.length > 0 && cells.every(isNumber),
        };
    });
}

export interface Cell {
    row: number;
    column: number;
}

const SLICE = 20_000;

/**
 * The next cell that holds the text, going round at the end; undefined when no cell does. Yields between slices of the
 * work, so that whoever drives it can let the page breathe.
 */
export function* findCell(
    rows: TableRows,
    columns: number,
    matches: (text: string) => boolean,
    from: Cell,
    direction: 1 | -1,
): Generator<undefined, Cell | undefined> {
    if (rows.length === 0 || columns === 0) return undefined;
    const total = rows.length * columns;
    const start = from.row * columns + from.column;
    for (let step = 1; step <= total; step++) {
        if (step % SLICE === 0) yield;
        const at = (((start + direction * step) % total) + total) % total;
        const row = Math.floor(at / columns);
        const text = rows[row]?.[at % columns];
        if (text && matches(text)) return { row, column: at % columns };
    }
    return undefined;
}

/** Whether a cell holds a text, by the switches of the find bar. */
export function matcher(text: string, { matchCase, wholeWord }: { matchCase: boolean; wholeWord: boolean }) {
    const escaped = text.replace(/[.*+?^${}()|[\]\\/]/g, '\\$&');
    const expression = wholeWord ? `(?<![\\p{L}\\p{N}_])${escaped}(?![\\p{L}\\p{N}_])` : escaped;
    const pattern = new RegExp(expression, matchCase ? 'u' : 'iu');
    return (cell: string) => pattern.test(cell);
}
