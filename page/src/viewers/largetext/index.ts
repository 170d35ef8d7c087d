import type { Doc } from '../../doc';
import { el, iconButton } from '../../dom';
import type { Keymap } from '../../keys';
import type { ViewContext } from '../../view';
import { ByteScrollBar, wheelRows } from '../shared/bytescroll';
import { FindBar } from '../shared/findbar';
import { setPressed } from '../shared/pressed';
import { findBytes, makeNeedle } from './bytesearch';
import { LineIndex } from './lineindex';
import { type Row, TextRows } from './textrows';
import './largetext.css';

const ROW_HEIGHT = 20;
const LONG_ROW = 4096;
const NEAR_BYTES = 1024 * 1024;
const TYPING_PAUSE = 300;
const ENCODING_NAMES = {
    'utf-8': 'UTF-8',
    'utf-16le': 'UTF-16 LE',
    'utf-16be': 'UTF-16 BE',
    'windows-1252': 'Windows-1252',
};

export async function show(host: HTMLElement, doc: Doc, view: ViewContext): Promise<void> {
    const head = await doc.range(0, 64 * 1024, view.signal);
    await new LargeText(host, doc, view, new TextRows(doc, head, view.signal)).start();
}

class LargeText {
    private readonly lines = el('div', { class: 'lt-lines' });
    private readonly scroller = el('div', { class: 'lt-scroller', tabindex: '0', role: 'document' }, this.lines);
    private readonly place = el('span', {});
    private readonly counting = el('span', {});
    private readonly bar: ByteScrollBar;
    private readonly find: FindBar;
    private readonly index: LineIndex;
    private readonly wrapButton: HTMLElement;

    private top: number;
    private lastTop = 0;
    private visible = 30;
    /** What input asked for since the last turn of the loop; merged, so that a held key never builds up a queue. */
    private delta = 0;
    private target: number | undefined;
    private layoutStale = true;
    private running = false;
    private again = false;
    private known: { offset: number; line: number } | undefined;
    private match: { start: number; end: number } | undefined;
    private searching: AbortController | undefined;
    private typingTimer = 0;

    constructor(
        private readonly host: HTMLElement,
        private readonly doc: Doc,
        private readonly view: ViewContext,
        private readonly rows: TextRows,
    ) {
        this.top = rows.origin;
        this.known = { offset: rows.origin, line: 1 };
        this.index = new LineIndex(doc, (bytes, start) => rows.countNewlinesIn(bytes, start));
        this.bar = new ByteScrollBar(
            at => this.ask({ target: at >= 1 ? doc.size - 1 : at * this.lastTop }),
            direction => this.ask({ delta: direction * (this.visible - 1) }),
        );
        this.find = new FindBar({
            without: 'options',
            query: text => {
                clearTimeout(this.typingTimer);
                this.typingTimer = window.setTimeout(
                    () => void this.search(text, 1, this.match?.start ?? this.top),
                    TYPING_PAUSE,
                );
            },
            step: direction => {
                clearTimeout(this.typingTimer);
                const from = this.match ? (direction > 0 ? this.match.start + 1 : this.match.start) : this.top;
                void this.search(this.find.text, direction, from);
            },
            closed: () => {
                clearTimeout(this.typingTimer);
                this.searching?.abort();
                this.match = undefined;
                this.scroller.focus();
                this.ask({});
            },
        });
        this.wrapButton = iconButton('wrap', 'Wrap lines (Alt+Z)', () => this.toggleWrap());
    }

    async start(): Promise<void> {
        const { signal } = this.view;
        const area = el('div', { class: 'lt-area' }, this.scroller, this.bar.element);
        const foot = el(
            'div',
            { class: 'foot' },
            this.place,
            el('span', { class: 'grow' }),
            this.counting,
            el('span', {}, ENCODING_NAMES[this.rows.encoding]),
        );
        this.host.append(el('div', { class: 'sheet enter lt-sheet' }, area, this.find.element, foot));
        this.view.chrome.tools(this.wrapButton, this.find.button);

        const wheel = wheelRows(ROW_HEIGHT);
        area.addEventListener('wheel', event => {
            if (event.ctrlKey || Math.abs(event.deltaX) > Math.abs(event.deltaY)) return;
            event.preventDefault();
            const delta = wheel(event);
            if (delta) this.ask({ delta });
        });
        this.view.keys(this.keymap());
        const resized = new ResizeObserver(() => {
            this.layoutStale = true;
            this.ask({});
        });
        resized.observe(this.scroller);
        signal.addEventListener('abort', () => {
            resized.disconnect();
            clearTimeout(this.typingTimer);
            this.searching?.abort();
        });

        await this.settle();
        this.scroller.focus();
        void this.countLines();
    }

    private ask(wish: { delta?: number; target?: number }): void {
        if (wish.target !== undefined) {
            this.target = wish.target;
            this.delta = 0;
        }
        this.delta += wish.delta ?? 0;
        this.settle().catch((error: unknown) => {
            if (!this.view.signal.aborted)
                this.view.chrome.status(error instanceof Error ? error.message : String(error));
        });
    }

    private async settle(): Promise<void> {
        if (this.running) {
            this.again = true;
            return;
        }
        this.running = true;
        try {
            do {
                this.again = false;
                if (this.layoutStale) await this.layout();
                if (this.target !== undefined) {
                    const target = this.target;
                    this.target = undefined;
                    this.top = await this.rows.rowAt(target);
                }
                // A huge distance is a jump, not a walk.
                const delta = Math.max(-2000, Math.min(2000, this.delta));
                this.delta = 0;
                if (delta) this.top = await this.rows.move(this.top, delta);
                this.top = Math.max(this.rows.origin, Math.min(this.top, this.lastTop));
                await this.paint();
            } while (this.again && !this.view.signal.aborted);
        } finally {
            this.running = false;
        }
    }

    private async layout(): Promise<void> {
        this.layoutStale = false;
        this.visible = Math.max(1, Math.floor((this.scroller.clientHeight - 12) / ROW_HEIGHT));
        if (this.wrapButton.classList.contains('on')) {
            const columns = Math.floor((this.scroller.clientWidth - 120) / this.characterWidth());
            this.rows.segment = Math.max(16, columns - (columns % 4));
        } else {
            this.rows.segment = LONG_ROW;
        }
        this.top = await this.rows.rowAt(this.top);
        this.lastTop = await this.rows.move(await this.rows.rowAt(this.rows.size - 1), 1 - this.visible);
    }

    private characterWidth(): number {
        const probe = el('span', { class: 'lt-probe' }, '0'.repeat(100));
        this.lines.append(probe);
        const width = probe.getBoundingClientRect().width / 100;
        probe.remove();
        return width || 7.5;
    }

    private async paint(): Promise<void> {
        const rows = await this.rows.rows(this.top, this.visible + 1);
        const first = rows[0];
        if (!first) return;
        let line = await this.lineOf(first.start);
        const elements: HTMLElement[] = [];
        for (const row of rows) {
            if (line !== undefined && row !== first && row.startsLine) line++;
            const number = row.startsLine ? (line?.toLocaleString('en') ?? '') : '';
            const text = el('span', { class: 'tx' });
            text.append(...(await this.marked(row)));
            elements.push(el('div', { class: 'lt-row' }, el('span', { class: 'no' }, number), text));
        }
        if (this.view.signal.aborted) return;
        this.lines.style.setProperty(
            '--digits',
            String(Math.max(5, (line ?? this.index.newlines).toLocaleString('en').length)),
        );
        this.lines.replaceChildren(...elements);
        this.lines.querySelector('mark.at')?.scrollIntoView({ block: 'nearest', inline: 'nearest' });
        const last = rows[rows.length - 1] as Row;
        const at =
            this.lastTop > this.rows.origin ? (this.top - this.rows.origin) / (this.lastTop - this.rows.origin) : 0;
        this.bar.set({ at, visible: this.lastTop > this.rows.origin ? (last.end - first.start) / this.rows.size : 1 });
        const topLine = await this.lineOf(first.start);
        const offset = `Offset ${first.start.toLocaleString('en')}`;
        this.place.textContent =
            topLine === undefined
                ? `${offset} · ${Math.floor(at * 100)}%`
                : `Line ${topLine.toLocaleString('en')} · ${offset}`;
    }

    private async lineOf(offset: number): Promise<number | undefined> {
        let line: number | undefined;
        if (this.known && Math.abs(offset - this.known.offset) <= NEAR_BYTES) {
            const { offset: from, line: known } = this.known;
            line =
                offset >= from
                    ? known + (await this.rows.newlinesBetween(from, offset))
                    : known - (await this.rows.newlinesBetween(offset, from));
        } else {
            line = await this.index.lineAt(offset);
        }
        this.known = line === undefined ? undefined : { offset, line };
        return line;
    }

    private async marked(row: Row): Promise<(Node | string)[]> {
        const query = this.find.isOpen ? this.find.text.toLowerCase() : '';
        const { match } = this;
        let at: [number, number] | undefined;
        if (match && match.start < row.end && match.end > row.start) {
            const from = await this.rows.columnOf(row.start, Math.max(match.start, row.start));
            at = [from, await this.rows.columnOf(row.start, Math.min(match.end, row.end))];
        }
        if (!query && !at) return [row.text];
        const out: (Node | string)[] = [];
        const lower = row.text.toLowerCase();
        let done = 0;
        const mark = (from: number, to: number, cls: string) => {
            out.push(row.text.slice(done, from), el('mark', { class: cls }, row.text.slice(from, to)));
            done = to;
        };
        for (;;) {
            const found = query && lower.length === row.text.length ? lower.indexOf(query, done) : -1;
            if (at && at[0] >= done && (found < 0 || at[0] <= found)) {
                mark(at[0], at[1], 'at');
                at = undefined;
            } else if (found >= 0) {
                mark(found, found + query.length, '');
            } else {
                out.push(row.text.slice(done));
                return out;
            }
        }
    }

    private keymap(): Keymap {
        const page = () => this.visible - 1;
        // A selection in a field or a button keeps its keys.
        const inside = (act: () => void) => (event: KeyboardEvent) => {
            if (event.target !== this.scroller && event.target !== document.body) return false;
            act();
            return true;
        };
        return [
            ...this.find.keys,
            { keys: 'Alt+Z', label: 'Wrap lines', run: () => this.toggleWrap() },
            { keys: 'ArrowDown', run: inside(() => this.ask({ delta: 1 })) },
            { keys: 'ArrowUp', run: inside(() => this.ask({ delta: -1 })) },
            { keys: ['PageDown', 'Space'], run: inside(() => this.ask({ delta: page() })) },
            { keys: ['PageUp', 'Shift+Space'], run: inside(() => this.ask({ delta: -page() })) },
            { keys: ['Home', 'Ctrl+Home'], label: 'Start', run: inside(() => this.ask({ target: this.rows.origin })) },
            { keys: ['End', 'Ctrl+End'], label: 'End', run: inside(() => this.ask({ target: this.rows.size - 1 })) },
        ];
    }

    private toggleWrap(): void {
        const on = !this.wrapButton.classList.contains('on');
        setPressed(this.wrapButton, on);
        this.lines.classList.toggle('wrap', on);
        this.layoutStale = true;
        this.ask({});
    }

    private async search(text: string, direction: 1 | -1, from: number): Promise<void> {
        this.searching?.abort();
        this.match = undefined;
        this.find.report('');
        if (!text) return this.ask({});
        const run = new AbortController();
        this.searching = run;
        const { size } = this.rows;
        const needle = makeNeedle(text, this.rows.encoding);
        let scanned = 0;
        const scan = (start: number) => {
            let last = start;
            return findBytes(this.doc, needle, {
                from: start,
                direction: direction > 0 ? 'forward' : 'backward',
                signal: run.signal,
                progress: done => {
                    scanned += Math.abs(done - last);
                    last = done;
                    this.find.report(`${Math.min(99, Math.floor((scanned / size) * 100))}%`);
                },
            });
        };
        try {
            let found = await scan(from);
            let wrapped = false;
            if (found < 0) {
                wrapped = true;
                found = await scan(direction > 0 ? 0 : size);
            }
            if (run.signal.aborted) return;
            if (found < 0) return this.find.report('None found');
            this.match = { start: found, end: found + needle.bytes.length };
            this.find.report(wrapped ? 'Wrapped' : '');
            this.ask({ target: found });
            this.ask({ delta: -Math.floor(this.visible / 3) });
        } catch (error) {
            if (!run.signal.aborted) this.find.report(error instanceof Error ? error.message : String(error));
        }
    }

    private async countLines(): Promise<void> {
        const { signal } = this.view;
        try {
            await this.index.run(signal, () => {
                this.counting.textContent = `Counting lines ${Math.floor((this.index.counted / this.rows.size) * 100)}%`;
                // Where the number was unknown until now, it may be known with this block.
                if (!this.known && this.index.counted > this.top) this.ask({});
            });
            const lastByte = await this.doc.range(this.rows.size - 1, 1, signal);
            const count = this.index.newlines + (lastByte[0] === 10 ? 0 : 1);
            this.counting.textContent = `${count.toLocaleString('en')} lines`;
        } catch {
            if (!signal.aborted) this.counting.textContent = '';
        }
    }
}
