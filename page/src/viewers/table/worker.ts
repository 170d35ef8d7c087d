import Papa from 'papaparse';
import { decodeText } from '../../decode';
import type { Sheet, TableAnswer, TableFormat } from './facts';

const MOST_ROWS = 1_000_000;
const MOST_SHEET_ROWS = 200_000;
const MOST_COLUMNS = 512;

function separated(bytes: Uint8Array, format: TableFormat): Sheet[] {
    const rows: string[][] = [];
    let left = 0;
    Papa.parse<string[]>(decodeText(bytes).text, {
        delimiter: format === 'tsv' ? '\t' : '',
        skipEmptyLines: true,
        step: ({ data }) => {
            if (rows.length < MOST_ROWS) rows.push(data);
            else left++;
        },
    });
    return [{ name: '', rows, left }];
}

async function workbook(bytes: Uint8Array): Promise<Sheet[]> {
    const xlsx = await import('@e965/xlsx');
    const book = xlsx.read(bytes, {
        type: 'array',
        dense: true,
        cellFormula: false,
        cellHTML: false,
        cellStyles: false,
        sheetRows: MOST_SHEET_ROWS,
    });
    return book.SheetNames.flatMap((name): Sheet[] => {
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
        return [{ name, rows: rows.map(row => row.map(String)), left: Math.max(0, whole.e.r - range.e.r) }];
    });
}

self.onmessage = async (event: MessageEvent<{ bytes: Uint8Array; format: TableFormat }>) => {
    const { bytes, format } = event.data;
    let answer: TableAnswer;
    try {
        answer = { sheets: format === 'workbook' ? await workbook(bytes) : separated(bytes, format) };
    } catch (error) {
        const text = error instanceof Error ? error.message : String(error);
        answer = {
            error: /password|encrypt/i.test(text)
                ? 'This spreadsheet is protected by a password.'
                : 'This spreadsheet is damaged, or its format is not supported.',
        };
    }
    postMessage(answer);
};
