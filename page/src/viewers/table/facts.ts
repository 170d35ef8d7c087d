export interface Sheet {
    name: string;
    rows: string[][];
    /** Rows that the file has beyond those that are held. */
    left: number;
}

export type TableFormat = 'csv' | 'tsv' | 'workbook';

export type TableAnswer = { sheets: Sheet[] } | { error: string };

const NUMBER = /^[-+−]?(\d{1,3}([, \u00a0]\d{3})+|\d+)?([.,]\d+)?([eE][-+]?\d+)?\s?%?$/;
const SAMPLE = 200;
const CHARACTER_WIDTH = 7.4;
const NARROWEST = 64;
const WIDEST = 360;

export function isNumber(text: string): boolean {
    return /\d/.test(text) && NUMBER.test(text.trim());
}

/** "A", "Z", "AA": the name of a column by its zero-based place. */
export function columnName(index: number): string {
    let name = '';
    for (let rest = index; rest >= 0; rest = Math.floor(rest / 26) - 1)
        name = String.fromCharCode(65 + (rest % 26)) + name;
    return name;
}

/** A first row of words above rows with at least one number, or of distinct words, names the columns. */
export function hasHeader(rows: string[][]): boolean {
    const [first, second] = rows;
    if (!first || !second || first.length < 1) return false;
    const words = first.filter(cell => cell.trim() !== '');
    return (
        words.length === first.length && words.every(cell => !isNumber(cell)) && new Set(words).size === words.length
    );
}

export interface Column {
    title: string;
    width: number;
    numeric: boolean;
}

export function columnsOf(rows: string[][], titles: string[] | undefined, most: number): Column[] {
    const head = rows.slice(0, SAMPLE);
    const count = Math.min(most, Math.max(titles?.length ?? 0, ...head.map(row => row.length), 0));
    return Array.from({ length: count }, (_, i) => {
        const title = titles?.[i] ?? columnName(i);
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

/** The next cell that holds the text, going round at the end; undefined when no cell does. */
export function findCell(
    rows: string[][],
    columns: number,
    text: string,
    from: Cell,
    direction: 1 | -1,
): Cell | undefined {
    const wanted = text.toLowerCase();
    if (!wanted || rows.length === 0 || columns === 0) return undefined;
    const total = rows.length * columns;
    const start = from.row * columns + from.column;
    for (let step = 1; step <= total; step++) {
        const at = (((start + direction * step) % total) + total) % total;
        const row = Math.floor(at / columns);
        if (rows[row]?.[at % columns]?.toLowerCase().includes(wanted)) return { row, column: at % columns };
    }
    return undefined;
}
