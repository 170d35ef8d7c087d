import Papa from 'papaparse';
import { decodeText, detectEncoding } from '../../decode';
import type { Sheet, TableFormat, TableJob, TableRows } from './facts';
import { MOST_ROWS, trimmed } from './facts';
import { unpackedSize } from './unpacked';

const MOST_SHEET_ROWS = 200_000;
const MOST_COLUMNS = 512;
const MOST_CELLS = 30_000_000;
const FIRST_BATCH = 2_000;
const BATCH = 50_000;
// What a workbook may unpack to; reading takes several times that in memory.
const UNPACKED_LIMIT = 1_500_000_000;
const DAMAGED = 'This spreadsheet is damaged, or its format is not supported.';
const PROTECTED = 'This spreadsheet is protected by a password.';
const TOO_LARGE = 'This spreadsheet unpacks to more than can be shown.';

const part = (rows: TableRows) => self.postMessage({ part: rows });

/** Sends the first rows as soon as they are read, the rest in larger batches. */
function separated({ bytes, format, encoding }: TableJob): { left: number; encoding: string } {
    const label = encoding ?? detectEncoding(bytes, true).label;
    let batch: TableRows = [];
    let rows = 0;
    let cells = 0;
    let left = 0;
    Papa.parse<string[]>(decodeText(bytes, label).text, {
        delimiter: format === 'tsv' ? '\t' : '',
        skipEmptyLines: true,
        step: ({ data }) => {
            cells += data.length;
            // One more than the most, for the titles.
            if (rows > MOST_ROWS || cells > MOST_CELLS) {
                left++;
                return;
            }
            rows++;
            batch.push(data);
            if (batch.length < (rows <= FIRST_BATCH ? FIRST_BATCH : BATCH)) return;
            part(batch);
            batch = [];
        },
    });
    part(batch);
    return { left, encoding: label };
}

async function workbook(bytes: Uint8Array): Promise<Sheet[]> {
    if (unpackedSize(bytes) > UNPACKED_LIMIT) throw new Error(TOO_LARGE);
    const xlsx = await import('@e965/xlsx');
    const book = xlsx.read(bytes, {
        type: 'array',
        dense: true,
        cellFormula: false,
        cellHTML: false,
        cellStyles: false,
        sheetRows: MOST_SHEET_ROWS,
    });
    const isHidden = (i: number) => (book.Workbook?.Sheets?.[i]?.Hidden ?? 0) !== 0;
    const all = book.SheetNames.map((name, i) => ({ name, hidden: isHidden(i) }));
    // A book of which every sheet is hidden would otherwise be empty.
    const seen = all.some(({ hidden }) => !hidden) ? all.filter(({ hidden }) => !hidden) : all;
    return seen.flatMap(({ name }): Sheet[] => {
        const sheet = book.Sheets[name];
        // Chart sheets have no cells.
        if (!sheet?.['!ref']) return sheet ? [{ name, rows: [], left: 0 }] : [];
        const range = xlsx.utils.decode_range(sheet['!ref']);
        const whole = sheet['!fullref'] ? xlsx.utils.decode_range(sheet['!fullref'] as string) : range;
        range.e.c = Math.min(range.e.c, range.s.c + MOST_COLUMNS - 1);
        const rows = xlsx.utils.sheet_to_json<string[]>(sheet, {
            header: 1,
            raw: false,
            defval: '',
            blankrows: true,
            range,
        });
        return [{ name, rows: trimmed(rows.map(row => row.map(String))), left: Math.max(0, whole.e.r - range.e.r) }];
    });
}

const isSeparated = (format: TableFormat) => format !== 'workbook';

self.onmessage = async ({ data: job }: MessageEvent<TableJob>) => {
    try {
        self.postMessage({ result: isSeparated(job.format) ? separated(job) : { sheets: await workbook(job.bytes) } });
    } catch (error) {
        const text = error instanceof Error ? error.message : String(error);
        const known = text === TOO_LARGE ? TOO_LARGE : DAMAGED;
        self.postMessage({ error: /password|encrypt/i.test(text) ? PROTECTED : known });
    }
};
