import { copyText } from '../../clipboard';
import type { Doc } from '../../doc';
import { el, iconButton } from '../../dom';
import { formatCount, formatSize } from '../../format';
import type { ViewContext } from '../../view';
import { VirtualRows } from '../../virtualrows';
import { FindBar } from '../shared/findbar';
import {
    type Cell,
    type Column,
    columnName,
    columnsOf,
    findCell,
    hasHeader,
    isNumber,
    type Sheet,
    type TableAnswer,
    type TableFormat,
} from './facts';
import './table.css';

const ROW_HEIGHT = 28;
const MOST_COLUMNS = 512;
const WORKER_MILLISECONDS = 20_000;
const SEPARATED_LIMIT = 64 * 1024 * 1024;
const WORKBOOK_LIMIT = 100 * 1024 * 1024;
// This format unpacks to many times its size.
const ODS_LIMIT = 20 * 1024 * 1024;

export async function show(host: HTMLElement, doc: Doc, view: ViewContext): Promise<void> {
    const format: TableFormat = doc.ext === 'csv' ? 'csv' : doc.ext === 'tsv' || doc.ext === 'tab' ? 'tsv' : 'workbook';
    if (format !== 'workbook' && doc.size > SEPARATED_LIMIT)
        return (await import('../largetext')).show(host, doc, view);
    if (doc.size > (doc.ext === 'ods' ? ODS_LIMIT : WORKBOOK_LIMIT))
        throw new Error('This spreadsheet is too large to be shown.');
    const sheets = await read(await doc.bytes(view.signal), format, view.signal);
    if (sheets.length === 0) throw new Error('This spreadsheet has no sheets with cells.');
    new TableView(host, doc, view, sheets);
}

function read(bytes: Uint8Array<ArrayBuffer>, format: TableFormat, signal: AbortSignal): Promise<Sheet[]> {
    const worker = new Worker(new URL('./worker.ts', import.meta.url), { type: 'module' });
    return new Promise<Sheet[]>((resolve, reject) => {
        const timer = setTimeout(
            () => reject(new Error('This spreadsheet took too long to read.')),
            WORKER_MILLISECONDS,
        );
        signal.addEventListener('abort', () => reject(signal.reason), { once: true });
        worker.onmessage = ({ data }: MessageEvent<TableAnswer>) =>
            'error' in data ? reject(new Error(data.error)) : resolve(data.sheets);
        worker.onerror = () => reject(new Error('This spreadsheet could not be read.'));
        worker.postMessage({ bytes, format }, [bytes.buffer]);
        signal.addEventListener('abort', () => clearTimeout(timer), { once: true });
    }).finally(() => worker.terminate());
}

class TableView {
    private readonly address = el('span', { class: 'tb-address' });
    private readonly content = el('span', { class: 'tb-content' });
    private readonly head = el('div', { class: 'tb-head', role: 'row' });
    private readonly sizer = el('div', { class: 'tb-rows' });
    private readonly corner = el('span', { class: 'tb-no' });
    private readonly scroller = el(
        'div',
        { class: 'tb-scroll', tabindex: '0', role: 'grid', 'aria-label': 'Table', 'data-focus': '' },
        this.sizer,
    );
    private readonly tabs = el('div', { class: 'tb-tabs', role: 'tablist' });
    private readonly count = el('span', {});
    private readonly find: FindBar;
    private readonly findButton = iconButton('search', 'Find (Ctrl+F)', () =>
        this.find.isOpen ? this.find.close() : this.openFind(),
    );
    private readonly virtual: VirtualRows;
    private rows: string[][] = [];
    private columns: Column[] = [];
    private lefts: number[] = [];
    private firstNumber = 1;
    private cell: Cell = { row: 0, column: 0 };

    constructor(
        host: HTMLElement,
        private readonly doc: Doc,
        private readonly view: ViewContext,
        private readonly sheets: Sheet[],
    ) {
        const { signal } = view;
        this.find = new FindBar({
            query: text => this.seek(text, 1, { row: this.cell.row, column: this.cell.column - 1 }),
            step: direction => this.seek(this.find.text, direction, this.cell),
            closed: () => {
                this.findButton.classList.remove('on');
                this.scroller.focus();
            },
        });
        const table = this;
        this.virtual = new VirtualRows(
            this.scroller,
            this.sizer,
            {
                rowHeight: ROW_HEIGHT,
                get count() {
                    return table.rows.length;
                },
                render: index => this.row(index),
            },
            signal,
        );
        host.append(
            el(
                'div',
                { class: 'sheet enter tb-sheet' },
                el('div', { class: 'tb-line' }, this.address, this.content),
                el('div', { class: 'tb-headbox' }, this.head),
                this.scroller,
                this.find.element,
                el('div', { class: 'foot' }, this.tabs, el('span', { class: 'grow' }), this.count),
            ),
        );
        view.chrome.tools(
            iconButton('copy', 'Copy cell (Ctrl+C)', () => this.copy()),
            this.findButton,
        );
        if (sheets.length > 1) {
            this.tabs.append(
                ...sheets.map((sheet, i) =>
                    el(
                        'button',
                        { class: 'btn', type: 'button', role: 'tab', onclick: () => this.open(i) },
                        sheet.name,
                    ),
                ),
            );
        }
        this.scroller.addEventListener(
            'scroll',
            () => {
                const { scrollLeft } = this.scroller;
                this.head.style.transform = `translateX(${-scrollLeft}px)`;
                this.corner.style.transform = `translateX(${scrollLeft}px)`;
            },
            { passive: true },
        );
        this.sizer.addEventListener('pointerdown', event => {
            const target = (event.target as HTMLElement).closest<HTMLElement>('.tb-cell');
            const row = target?.parentElement?.dataset['row'];
            if (target && row) this.select({ row: Number(row), column: Number(target.dataset['column']) });
        });
        document.addEventListener('keydown', event => this.key(event), { signal });
        this.open(0);
    }

    private open(index: number): void {
        const sheet = this.sheets[index] as Sheet;
        const titled = hasHeader(sheet.rows);
        this.rows = titled ? sheet.rows.slice(1) : sheet.rows;
        this.firstNumber = titled ? 2 : 1;
        this.columns = columnsOf(this.rows, titled ? sheet.rows[0] : undefined, MOST_COLUMNS);
        // Each column's left edge, and the right edge of all.
        this.lefts = [56];
        for (const column of this.columns)
            this.lefts.push((this.lefts[this.lefts.length - 1] as number) + column.width);
        this.head.replaceChildren(
            this.corner,
            ...this.columns.map(column =>
                el(
                    'span',
                    {
                        class: `tb-title ${column.numeric ? 'num' : ''}`,
                        role: 'columnheader',
                        title: column.title,
                        style: `width:${column.width}px`,
                    },
                    column.title,
                ),
            ),
        );
        this.sizer.style.width = this.head.style.width = `max(100%, ${this.lefts[this.lefts.length - 1]}px)`;
        [...this.tabs.children].forEach((tab, i) => {
            tab.classList.toggle('on', i === index);
            tab.setAttribute('aria-selected', String(i === index));
        });
        const shown = formatCount(this.rows.length, 'row');
        this.view.chrome.meta(`${formatCount(this.rows.length + sheet.left, 'row')} · ${formatSize(this.doc.size)}`);
        this.count.textContent =
            sheet.left > 0
                ? `First ${shown} of ${formatCount(this.rows.length + sheet.left, 'row')}`
                : `${shown}, ${formatCount(this.columns.length, 'column')}`;
        this.scroller.scrollTo(0, 0);
        this.cell = { row: 0, column: 0 };
        this.virtual.redraw();
        this.select(this.cell);
    }

    private row(index: number): HTMLElement {
        const cells = this.rows[index] ?? [];
        const row = el(
            'div',
            { class: 'tb-row', role: 'row', 'data-row': index },
            el('span', { class: 'tb-no' }, String(index + this.firstNumber)),
        );
        this.columns.forEach((column, i) => {
            const text = cells[i] ?? '';
            row.append(
                el(
                    'span',
                    {
                        class: `tb-cell ${column.numeric || isNumber(text) ? 'num' : ''}`,
                        role: 'gridcell',
                        'data-column': i,
                        style: `width:${column.width}px`,
                    },
                    text.slice(0, 300),
                ),
            );
        });
        if (index === this.cell.row) this.mark(row);
        return row;
    }

    private mark(row: HTMLElement | undefined): void {
        row?.classList.add('at');
        row?.children[this.cell.column + 1]?.classList.add('at');
    }

    private select(cell: Cell): void {
        if (this.rows.length === 0 || this.columns.length === 0) return;
        const before = this.virtual.at(this.cell.row);
        before?.classList.remove('at');
        before?.querySelector('.tb-cell.at')?.classList.remove('at');
        this.cell = {
            row: Math.max(0, Math.min(cell.row, this.rows.length - 1)),
            column: Math.max(0, Math.min(cell.column, this.columns.length - 1)),
        };
        const { row, column } = this.cell;
        this.virtual.reveal(row);
        this.mark(this.virtual.at(row));
        const left = this.lefts[column] as number;
        const right = this.lefts[column + 1] as number;
        const { scrollLeft, clientWidth } = this.scroller;
        if (left - 56 < scrollLeft) this.scroller.scrollLeft = left - 56;
        else if (right > scrollLeft + clientWidth) this.scroller.scrollLeft = right - clientWidth;
        this.address.textContent = `${columnName(column)}${row + this.firstNumber}`;
        this.content.textContent = (this.rows[row]?.[column] ?? '').slice(0, 2000);
    }

    private seek(text: string, direction: 1 | -1, from: Cell): void {
        if (!text) return this.find.report('');
        const found = findCell(this.rows, this.columns.length, text, from, direction);
        this.find.report(found ? '' : 'None found');
        if (found) this.select(found);
    }

    private openFind(): void {
        this.findButton.classList.add('on');
        this.find.open();
    }

    private copy(): void {
        const text = this.rows[this.cell.row]?.[this.cell.column] ?? '';
        void copyText(text).then(success =>
            this.view.chrome.status(success ? 'Copied' : 'There is nothing to copy in this cell.'),
        );
    }

    private key(event: KeyboardEvent): void {
        if (event.defaultPrevented || event.altKey || event.metaKey) return;
        const key = event.key.length === 1 ? event.key.toLowerCase() : event.key;
        const { row, column } = this.cell;
        const inside = document.activeElement === this.scroller;
        const far = 2 ** 31;
        const moves: Record<string, Cell> = {
            ArrowUp: { row: event.ctrlKey ? 0 : row - 1, column },
            ArrowDown: { row: event.ctrlKey ? far : row + 1, column },
            ArrowLeft: { row, column: event.ctrlKey ? 0 : column - 1 },
            ArrowRight: { row, column: event.ctrlKey ? far : column + 1 },
            PageUp: { row: row - this.virtual.pageStep, column },
            PageDown: { row: row + this.virtual.pageStep, column },
            Home: { row: event.ctrlKey ? 0 : row, column: 0 },
            End: { row: event.ctrlKey ? far : row, column: far },
        };
        const move = moves[key];
        if (event.ctrlKey && key === 'f') this.openFind();
        else if (key === 'F3')
            this.find.text ? this.seek(this.find.text, event.shiftKey ? -1 : 1, this.cell) : this.openFind();
        else if (key === 'Escape' && this.find.isOpen) this.find.close();
        else if (!inside) return;
        else if (event.ctrlKey && key === 'c' && !getSelection()?.toString()) this.copy();
        else if (move) this.select(move);
        else return;
        event.preventDefault();
    }
}
