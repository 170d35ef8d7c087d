import { type Doc, Refusal } from '../../doc';
import type { ViewContext } from '../../view';
import { runWorker } from '../shared/worker';
import type { Sheet, TableFormat, TableJob, TableRows } from './facts';
import { TableView } from './tableview';
import './table.css';

const UNREADABLE = 'This spreadsheet could not be read.';
const TOO_LARGE = 'This spreadsheet is too large to be shown.';
const SEPARATED_LIMIT = 64 * 1024 * 1024;
const WORKBOOK_LIMIT = 100 * 1024 * 1024;
// This format unpacks to many times its size.
const ODS_LIMIT = 20 * 1024 * 1024;

export async function show(host: HTMLElement, doc: Doc, view: ViewContext): Promise<void> {
    const format: TableFormat =
        doc.ext === 'tsv' || doc.ext === 'tab' ? 'tsv' : isWorkbook(doc.ext) ? 'workbook' : 'csv';
    if (format === 'workbook') return showWorkbook(host, doc, view);
    if (doc.size > SEPARATED_LIMIT) return (await import('../largetext')).show(host, doc, view);
    await showSeparated(host, doc, view, format);
}

const isWorkbook = (ext: string) => !['csv', 'tsv', 'tab', 'psv', 'txt'].includes(ext);

const makeWorker = () => new Worker(new URL('./worker.ts', import.meta.url), { type: 'module' });

async function showWorkbook(host: HTMLElement, doc: Doc, view: ViewContext): Promise<void> {
    if (doc.size > (doc.ext === 'ods' ? ODS_LIMIT : WORKBOOK_LIMIT)) throw new Refusal(TOO_LARGE);
    const bytes = await doc.bytes(view.signal);
    const job: TableJob = { bytes, format: 'workbook' };
    const { sheets } = await runWorker<never, { sheets: Sheet[] }>(
        makeWorker(),
        { message: job, transfer: [bytes.buffer] },
        view.signal,
        UNREADABLE,
    );
    if (sheets.length === 0) throw new Error('This spreadsheet has no sheets with cells.');
    new TableView(host, doc, view, sheets);
}

/** Shows the first rows at once; the rest comes while one reads. */
async function showSeparated(host: HTMLElement, doc: Doc, view: ViewContext, format: TableFormat): Promise<void> {
    const rows: TableRows = [];
    const sheet: Sheet = { name: '', rows, left: 0 };
    let table: TableView | undefined;
    const bytes = await doc.bytes(view.signal);
    let started: () => void = () => undefined;
    let refused: (error: unknown) => void = () => undefined;
    const firstRows = new Promise<void>((resolve, reject) => {
        started = resolve;
        refused = reject;
    });
    const read = (encoding?: string) => {
        const job: TableJob = encoding ? { bytes, format, encoding } : { bytes, format };
        const take = (part: TableRows) => {
            for (const row of part) rows.push(row);
            if (table) table.grow();
            else table = new TableView(host, doc, view, [sheet]);
            started();
        };
        return runWorker<TableRows, { left: number; encoding: string }>(
            makeWorker(),
            { message: job, transfer: [] },
            view.signal,
            UNREADABLE,
            take,
        );
    };
    const chooseEncoding = (label: string) => {
        rows.length = 0;
        void read(label).then(finish, failed);
    };
    const finish = ({ left, encoding }: { left: number; encoding: string }) => {
        sheet.left = left;
        table?.complete(encoding, chooseEncoding);
    };
    const failed = (error: unknown) => {
        if (!view.signal.aborted) view.chrome.status(error instanceof Error ? error.message : UNREADABLE);
        refused(error);
    };
    void read().then(finish, failed);
    await firstRows;
}
