import { copyText } from '../../clipboard';
import type { Doc } from '../../doc';
import { el, iconButton } from '../../dom';
import { formatCount, formatSize } from '../../format';
import type { Keymap } from '../../keys';
import type { ViewContext } from '../../view';
import { VirtualRows } from '../../virtualrows';
import { encodingButton } from '../shared/encodings';
import { FindBar, type FindOptions } from '../shared/findbar';
import {
    type Cell,
    type Column,
    columnName,
    columnsOf,
    findCell,
    hasHeader,
    isNumber,
    MOST_ROWS,
    matcher,
    type Sheet,
} from './facts';

const ROW_HEIGHT = 28;
const MOST_COLUMNS = 512;
const LEAST_NUMBER_WIDTH = 56;
const DIGIT_WIDTH = 8;
// Beyond this many rows a larger text would make the list higher than the engine can lay out.
const MOST_ZOOMED_ROWS = 390_000;
const SLICE_MILLISECONDS = 12;

/** The rows of one or more sheets, with a cell that is looked at. */
export class TableView {
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
    private readonly virtual: VirtualRows;
    private readonly foot: HTMLElement;
    private shown = 0;
    private rows: string[][] = [];
    private columns: Column[] = [];
    private lefts: number[] = [];
    private firstNumber = 1;
    private numberWidth = LEAST_NUMBER_WIDTH;
    private titled = false;
    private seeking: AbortController | undefined;
    private cell: Cell = { row: 0, column: 0 };

    constructor(
        host: HTMLElement,
        private readonly doc: Doc,
        private readonly view: ViewContext,
        private readonly sheets: Sheet[],
    ) {
        const { signal } = view;
        this.find = new FindBar({
            query: (text, options) =>
                void this.seek(text, options, 1, { row: this.cell.row, column: this.cell.column - 1 }),
            step: direction => void this.seek(this.find.text, this.find.options, direction, this.cell),
            closed: () => {
                this.scroller.focus();
            },
        });
        this.virtual = new VirtualRows(
            this.scroller,
            this.sizer,
            {
                rowHeight: ROW_HEIGHT,
                margin: 0,
                count: () => this.rows.length,
                render: index => this.row(index),
            },
            signal,
        );
        const line = el('div', { class: 'tb-line' }, this.address, this.content);
        const headbox = el('div', { class: 'tb-headbox' }, this.head);
        this.foot = el('div', { class: 'foot' }, this.tabs, el('span', { class: 'grow' }), this.count);
        const parts = [line, headbox, this.scroller, this.find.element, this.foot];
        const sheet = el('div', { class: 'sheet enter tb-sheet' }, ...parts);
        host.append(sheet);
        if (sheets.every(({ rows }) => rows.length < MOST_ZOOMED_ROWS)) view.zoomable(sheet);
        view.copies(() => ({
            text: this.rows[this.cell.row]?.[this.cell.column] || this.address.textContent || ' ',
            what: 'Cell',
        }));
        view.chrome.tools(
            iconButton('copy', 'Copy cell (Ctrl+C)', () => this.copy()),
            this.find.button,
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
        view.keys(this.keymap());
        this.open(0);
    }

    /** Takes in rows that have been read meanwhile. */
    grow(): void {
        this.takeRows();
        this.virtual.grow();
    }

    /** All rows are there. */
    complete(encoding: string, choose: (label: string) => void): void {
        this.open(this.shown);
        const button = encodingButton(encoding, choose);
        this.foot.querySelector('.encoding')?.remove();
        this.foot.insertBefore(button, this.count);
    }

    private takeRows(): void {
        const { rows } = this.sheets[this.shown] as Sheet;
        this.titled = hasHeader(rows);
        this.rows = this.titled ? rows.slice(1, MOST_ROWS + 1) : rows.slice(0, MOST_ROWS);
        this.firstNumber = this.titled ? 2 : 1;
    }

    private open(index: number): void {
        const sheet = this.sheets[index] as Sheet;
        this.shown = index;
        this.takeRows();
        const { titled } = this;
        this.columns = columnsOf(this.rows, titled ? sheet.rows[0] : undefined, MOST_COLUMNS);
        // Each column's left edge, and the right edge of all.
        const digits = String(this.rows.length + this.firstNumber).length;
        this.numberWidth = Math.max(LEAST_NUMBER_WIDTH, digits * DIGIT_WIDTH + 24);
        this.sizer.parentElement?.parentElement?.style.setProperty('--number-width', `${this.numberWidth}px`);
        this.lefts = [this.numberWidth];
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
        if (left - this.numberWidth < scrollLeft) this.scroller.scrollLeft = left - this.numberWidth;
        else if (right > scrollLeft + clientWidth) this.scroller.scrollLeft = right - clientWidth;
        this.address.textContent = `${columnName(column)}${row + this.firstNumber}`;
        this.content.textContent = (this.rows[row]?.[column] ?? '').slice(0, 2000);
    }

    private async seek(text: string, options: FindOptions, direction: 1 | -1, from: Cell): Promise<void> {
        this.seeking?.abort();
        this.find.report('');
        if (!text) return;
        const run = new AbortController();
        this.seeking = run;
        const walk = findCell(this.rows, this.columns.length, matcher(text, options), from, direction);
        let paused = performance.now();
        for (let next = walk.next(); ; next = walk.next()) {
            if (run.signal.aborted || this.view.signal.aborted) return;
            if (next.done) {
                this.find.report(next.value ? '' : 'None found');
                if (next.value) this.select(next.value);
                return;
            }
            if (performance.now() - paused < SLICE_MILLISECONDS) continue;
            this.find.report('Searching');
            await new Promise(resolve => setTimeout(resolve));
            paused = performance.now();
        }
    }

    private copy(): void {
        const text = this.rows[this.cell.row]?.[this.cell.column] ?? '';
        void copyText(text).then(success =>
            this.view.chrome.status(success ? 'Copied' : 'There is nothing to copy in this cell.'),
        );
    }

    private keymap(): Keymap {
        const far = 2 ** 31;
        const go = (keys: string, to: (cell: Cell) => Cell, label?: string) => ({
            keys,
            ...(label ? { label } : {}),
            run: () => document.activeElement === this.scroller && (this.select(to(this.cell)) ?? true),
        });
        return [
            ...this.find.keys,
            go('ArrowUp', ({ row, column }) => ({ row: row - 1, column })),
            go('ArrowDown', ({ row, column }) => ({ row: row + 1, column })),
            go('ArrowLeft', ({ row, column }) => ({ row, column: column - 1 })),
            go('ArrowRight', ({ row, column }) => ({ row, column: column + 1 })),
            go('Ctrl+ArrowUp', ({ column }) => ({ row: 0, column }), 'First row'),
            go('Ctrl+ArrowDown', ({ column }) => ({ row: far, column }), 'Last row'),
            go('Ctrl+ArrowLeft', ({ row }) => ({ row, column: 0 })),
            go('Ctrl+ArrowRight', ({ row }) => ({ row, column: far })),
            go('PageUp', ({ row, column }) => ({ row: row - this.virtual.pageStep, column })),
            go('PageDown', ({ row, column }) => ({ row: row + this.virtual.pageStep, column })),
            go('Home', ({ row }) => ({ row, column: 0 }), 'First column'),
            go('End', ({ row }) => ({ row, column: far }), 'Last column'),
            go('Ctrl+Home', () => ({ row: 0, column: 0 })),
            go('Ctrl+End', () => ({ row: far, column: far })),
        ];
    }
}
