import type { Doc } from '../../doc';
import { el, iconButton } from '../../dom';
import type { ViewContext } from '../../view';
import { BlockCache } from '../shared/blockcache';
import { ByteScrollBar, wheelRows } from '../shared/bytescroll';
import { asciiOf, hexByte, hexOffset, moveCursor, parseOffset } from './format';
import './hex.css';

const ROW_HEIGHT = 20;
const NARROW_WIDTH = 720;

export async function show(host: HTMLElement, doc: Doc, view: ViewContext): Promise<void> {
    if (doc.size === 0) {
        host.append(
            el('div', { class: 'sheet enter hex-sheet' }, el('p', { class: 'hex-empty' }, 'This file is empty.')),
        );
        return;
    }
    await new HexView(host, doc, view).start();
}

class HexView {
    private readonly rows = el('div', { class: 'hex-rows' });
    private readonly area = el(
        'div',
        { class: 'hex-area', tabindex: '0', role: 'grid', 'aria-label': 'Bytes' },
        this.rows,
    );
    private readonly place = el('span', { role: 'status' });
    private readonly value = el('span', {});
    private readonly goTo = el('input', {
        'aria-label': 'Go to offset',
        placeholder: 'Go to offset',
        spellcheck: 'false',
        autocomplete: 'off',
    });
    private readonly bar: ByteScrollBar;
    private readonly cache: BlockCache;
    private perRow = 16;
    private visible = 20;
    private top = 0;
    private cursor = 0;
    private painting = 0;
    /** The byte at the cursor, while it is in sight. */
    private current: number | undefined;

    constructor(
        private readonly host: HTMLElement,
        private readonly doc: Doc,
        private readonly view: ViewContext,
    ) {
        this.cache = new BlockCache(doc, view.signal);
        this.bar = new ByteScrollBar(
            at => this.scrollTo(Math.round(at * this.lastTop())),
            direction => this.scrollTo(this.top + direction * (this.visible - 1)),
        );
    }

    async start(): Promise<void> {
        const { signal } = this.view;
        const foot = el('div', { class: 'foot' }, this.place, this.value, el('span', { class: 'grow' }), this.goTo);
        const frame = el('div', { class: 'hex-frame' }, this.area, this.bar.element);
        const sheet = el('div', { class: 'sheet enter hex-sheet' }, frame, foot);
        this.host.append(sheet);
        this.view.chrome.tools(iconButton('search', 'Go to offset (Ctrl+G)', () => this.goTo.focus()));

        const wheel = wheelRows(ROW_HEIGHT);
        this.area.addEventListener('wheel', event => {
            if (event.ctrlKey || Math.abs(event.deltaX) > Math.abs(event.deltaY)) return;
            event.preventDefault();
            this.scrollTo(this.top + wheel(event));
        });
        this.area.addEventListener('pointerdown', event => {
            const cell = (event.target as HTMLElement).closest<HTMLElement>('[data-at]');
            if (cell) this.select(Number(cell.dataset['at']));
        });
        this.area.addEventListener('keydown', event => {
            if (event.altKey || event.metaKey) return;
            const to = moveCursor(event.key, event.ctrlKey, {
                offset: this.cursor,
                size: this.doc.size,
                perRow: this.perRow,
                pageRows: this.visible - 1,
            });
            if (to === undefined) return;
            event.preventDefault();
            this.select(to);
        });
        this.goTo.addEventListener('keydown', event => {
            if (event.key === 'Escape') this.area.focus();
            if (event.key !== 'Enter') return;
            const to = parseOffset(this.goTo.value, this.doc.size);
            this.goTo.setAttribute('aria-invalid', String(to === undefined));
            if (to === undefined) return this.view.chrome.status('An offset is a number such as 4096, 0x1000 or 50%.');
            this.select(to);
            this.area.focus();
        });
        const goTo = () => {
            this.goTo.focus();
            this.goTo.select();
        };
        this.view.keys([{ keys: ['Ctrl+G', 'Ctrl+F'], label: 'Go to offset', run: goTo }]);
        this.view.zoomable(sheet);
        this.view.copies(() => (this.current === undefined ? null : { text: hexByte(this.current), what: 'Byte' }));
        const resized = new ResizeObserver(() => this.layout());
        resized.observe(this.area);
        signal.addEventListener('abort', () => resized.disconnect());
        this.measure();
        await this.paint();
        this.area.focus();
    }

    private lastTop(): number {
        return Math.max(0, Math.ceil(this.doc.size / this.perRow) - this.visible);
    }

    private measure(): void {
        this.perRow = this.area.clientWidth < NARROW_WIDTH ? 8 : 16;
        this.visible = Math.max(1, Math.floor((this.area.clientHeight - 12) / ROW_HEIGHT));
    }

    private layout(): void {
        const firstByte = this.top * this.perRow;
        this.measure();
        this.scrollTo(Math.floor(firstByte / this.perRow));
    }

    private select(offset: number): void {
        this.cursor = offset;
        const row = Math.floor(offset / this.perRow);
        if (row < this.top) this.scrollTo(row);
        else if (row >= this.top + this.visible) this.scrollTo(row - this.visible + 1);
        else this.scrollTo(this.top);
    }

    private scrollTo(row: number): void {
        this.top = Math.max(0, Math.min(row, this.lastTop()));
        this.paint().catch((error: unknown) => {
            if (!this.view.signal.aborted)
                this.view.chrome.status(error instanceof Error ? error.message : String(error));
        });
    }

    private async paint(): Promise<void> {
        const turn = ++this.painting;
        const start = this.top * this.perRow;
        const bytes = await this.cache.read(start, start + (this.visible + 1) * this.perRow);
        // A later scroll has taken over while the bytes were on their way.
        if (turn !== this.painting || this.view.signal.aborted) return;
        const out: HTMLElement[] = [];
        for (let at = 0; at < bytes.length; at += this.perRow)
            out.push(this.row(start + at, bytes.subarray(at, at + this.perRow)));
        this.rows.replaceChildren(...out);
        this.bar.set({
            at: this.lastTop() ? this.top / this.lastTop() : 0,
            visible: (this.visible * this.perRow) / this.doc.size,
        });
        const byte = bytes[this.cursor - start];
        this.current = byte;
        this.place.textContent = `Offset ${this.cursor.toLocaleString('en')} (0x${this.cursor.toString(16).toUpperCase()})`;
        this.value.textContent =
            byte === undefined ? '' : `${byte} · 0x${hexByte(byte)} · ${byte.toString(2).padStart(8, '0')}`;
    }

    private row(offset: number, bytes: Uint8Array): HTMLElement {
        const hex = el('span', { class: 'hx' });
        const text = el('span', { class: 'as' });
        bytes.forEach((value, i) => {
            const at = offset + i;
            const cls =
                `${value === 0 ? 'zero' : ''}${at === this.cursor ? ' at' : ''}${i > 0 && i % 8 === 0 ? ' gap' : ''}`.trim();
            hex.append(el('span', { class: cls, 'data-at': at }, hexByte(value)));
            text.append(el('span', { class: at === this.cursor ? 'at' : '', 'data-at': at }, asciiOf(value)));
        });
        for (let i = bytes.length; i < this.perRow; i++)
            hex.append(el('span', { class: i % 8 === 0 ? 'gap' : '' }, '  '));
        return el(
            'div',
            { class: 'hex-row', role: 'row' },
            el('span', { class: 'no' }, hexOffset(offset, this.doc.size)),
            hex,
            text,
        );
    }
}
