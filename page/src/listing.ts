import type { Entry } from './bridge';
import type { Browser } from './browser';
import { el, icon } from './dom';
import { entryName, entryRow } from './entryrow';
import { formatCount } from './format';
import { answer, type Keymap } from './keys';
import { isArchive } from './kinds';
import { openMenu } from './menu';
import { type Column, filterByName, findTyped, firstDirection } from './sorting';
import { VirtualRows } from './virtualrows';

const ROW = 34;
const TYPED_FOR = 1000;
const COLUMNS: [Column, string][] = [
    ['name', 'Name'],
    ['kind', 'Kind'],
    ['size', 'Size'],
    ['modified', 'Modified'],
];

export interface ListingHost {
    status(text: string): void;
    copyPath(entry: Entry): void;
    /** Opens the panel that tells about the selected entry. */
    details(): void;
    selected(entry: Entry): void;
}

/** The list of one folder or archive level. */
export function showListing(host: HTMLElement, signal: AbortSignal, browser: Browser, page: ListingHost): Keymap {
    return new ListingView(host, signal, browser, page).keymap;
}

class ListingView {
    private entries: readonly Entry[];
    private selected: number;
    private typed = '';
    private typedTimer = 0;
    private readonly sizer = el('div', { class: 'sizer', role: 'rowgroup' });
    private readonly scroller = el('div', { class: 'rows' }, this.sizer);
    private readonly head = el('div', { class: 'head', role: 'row' });
    private readonly find = el('span', { class: 'hint' });
    private readonly count = el('span', {});
    private readonly field = el('input', {
        class: 'filter',
        placeholder: 'Filter',
        'aria-label': 'Filter names',
        spellcheck: 'false',
    });
    private readonly empty = el('p', { class: 'empty', hidden: true }, 'This folder is empty.');
    private filter = '';
    readonly keymap: Keymap = [
        { keys: 'ArrowUp', run: () => this.move(-1) },
        { keys: 'ArrowDown', run: () => this.move(1) },
        { keys: 'PageUp', run: () => this.move(-this.rows.pageStep) },
        { keys: 'PageDown', run: () => this.move(this.rows.pageStep) },
        { keys: 'Home', label: 'First', run: () => this.moveTo(0) },
        { keys: 'End', label: 'Last', run: () => this.moveTo(this.entries.length - 1) },
        { keys: 'Enter', label: 'Open', run: () => this.open() },
        { keys: 'Space', label: 'Preview, and back', run: () => this.peek() },
        { keys: ['Ctrl+F', '/'], label: 'Filter names', run: () => this.field.focus() },
        { keys: 'Ctrl+C', label: 'Copy path', run: () => this.copyPath() },
    ];
    private readonly grid: HTMLElement;
    private readonly rows: VirtualRows;

    constructor(
        host: HTMLElement,
        signal: AbortSignal,
        private readonly browser: Browser,
        private readonly page: ListingHost,
    ) {
        this.entries = browser.entries;
        const place = browser.recall();
        this.selected =
            this.entries.length === 0
                ? -1
                : Math.max(
                      0,
                      this.entries.findIndex(entry => entry.name === place.name),
                  );
        this.grid = el(
            'div',
            {
                class: 'grid',
                role: 'grid',
                tabindex: 0,
                'data-focus': true,
                'aria-label': 'Files',
                'aria-rowcount': this.entries.length + 1,
                onkeydown: (event: KeyboardEvent) => this.key(event),
            },
            this.head,
            this.scroller,
        );
        host.append(el('div', { class: 'pane listing enter' }, this.grid, this.foot()));
        this.empty.hidden = this.entries.length > 0;
        this.scroller.append(this.empty);
        this.sizer.addEventListener('pointerdown', event => this.pick(event));
        this.sizer.addEventListener('dblclick', () => this.open());
        this.grid.addEventListener('contextmenu', event => this.contextMenu(event));
        this.rows = new VirtualRows(
            this.scroller,
            this.sizer,
            { count: () => this.entries.length, rowHeight: ROW, render: i => this.row(i) },
            signal,
        );
        this.showHead();
        this.rows.redraw();
        this.scroller.scrollTop = place.scrollTop;
        if (this.selected >= 0) this.select(this.selected);
        signal.addEventListener('abort', () => clearTimeout(this.typedTimer));
        this.scroller.addEventListener('scroll', () => this.keepPlace(), { signal, passive: true });
    }

    private showHead(): void {
        const { column, direction } = this.browser;
        this.head.replaceChildren(
            ...COLUMNS.map(([key, label]) => {
                const sorted = key === column;
                const button = el(
                    'button',
                    { type: 'button', class: sorted && 'sorted', onclick: () => this.sort(key) },
                    label,
                    sorted && icon('sort', direction === 'ascending' ? 's' : 's down'),
                );
                return el(
                    'div',
                    { role: 'columnheader', class: `col-${key}`, 'aria-sort': sorted ? direction : 'none' },
                    button,
                );
            }),
        );
    }

    private sort(column: Column): void {
        const { browser } = this,
            current = this.entries[this.selected];
        const turned = browser.direction === 'ascending' ? 'descending' : 'ascending';
        const sorted = browser.sort(column, browser.column === column ? turned : firstDirection(column));
        this.entries = filterByName(sorted, this.filter);
        this.selected = current ? this.entries.indexOf(current) : -1;
        this.showHead();
        this.head.querySelector<HTMLElement>('.sorted')?.focus();
        this.rows.redraw();
        if (this.selected >= 0) this.select(this.selected);
    }

    private row(index: number): HTMLElement {
        return entryRow(this.entries[index]!, index, index === this.selected, this.typed);
    }

    private select(index: number): void {
        const before = this.selected;
        this.selected = index;
        this.rows.reveal(index);
        for (const at of new Set([before, index])) {
            const row = this.rows.at(at);
            row?.classList.toggle('sel', at === index);
            row?.setAttribute('aria-selected', String(at === index));
            row?.querySelector('b')?.replaceWith(entryName(this.entries[at]!, at === this.selected ? this.typed : ''));
        }
        this.grid.setAttribute('aria-activedescendant', `row-${index}`);
        this.page.selected(this.entries[index]!);
        this.keepPlace();
    }

    private keepPlace(): void {
        const name = this.entries[this.selected]?.name;
        if (name !== undefined) this.browser.remember({ name, scrollTop: this.scroller.scrollTop });
    }

    private pick(event: PointerEvent): void {
        const row = event.target instanceof Element ? event.target.closest<HTMLElement>('.row') : null;
        if (!row || event.button !== 0) return;
        this.grid.classList.remove('keys');
        this.endTyping();
        this.select(Number(row.dataset.index));
    }

    private open(): void {
        const entry = this.entries[this.selected];
        if (!entry) return;
        if (entry.blockedReason) this.page.status(entry.blockedReason);
        else this.browser.open(entry);
    }

    private key(event: KeyboardEvent): void {
        if (event.target !== this.grid) return;
        // The selection shows where the keys go; the ring is for those who use them.
        this.grid.classList.add('keys');
        if (this.typing(event) || answer(this.keymap, event)) event.preventDefault();
        if (event.defaultPrevented) event.stopPropagation();
    }

    private typing(event: KeyboardEvent): boolean {
        return !event.altKey && !event.ctrlKey && !event.metaKey && this.type(event);
    }

    private move(by: number): void {
        this.moveTo(this.selected + by);
    }

    private moveTo(index: number): void {
        this.endTyping();
        const last = this.entries.length - 1;
        if (last >= 0) this.select(Math.max(0, Math.min(last, index)));
    }

    /** Shows the selected document until Space is pressed again. */
    private peek(): boolean {
        const entry = this.entries[this.selected];
        if (!entry || this.typed) return false;
        if (entry.blockedReason) this.page.status(entry.blockedReason);
        else this.browser.peek(entry);
        return true;
    }

    private copyPath(): void {
        const entry = this.entries[this.selected];
        if (entry) this.page.copyPath(entry);
    }

    private menu(event: Event, place: HTMLElement | { x: number; y: number }): void {
        const entry = this.entries[this.selected];
        if (!entry) return;
        event.preventDefault();
        const isList = entry.isDirectory || isArchive(entry.ext);
        const preview = { label: 'Preview', keys: 'Space', run: () => void this.peek() };
        openMenu(place, entry.name, [
            [{ label: 'Open', keys: '↵', run: () => this.open() }, ...(isList ? [] : [preview])],
            [
                { label: 'Copy path', keys: 'Ctrl C', run: () => this.copyPath() },
                { label: 'Details', keys: 'Ctrl I', run: () => this.page.details() },
            ],
        ]);
    }

    private contextMenu(event: MouseEvent): void {
        const row = event.target instanceof Element ? event.target.closest<HTMLElement>('.row') : null;
        // The menu key has no place of its own; the selected row is where it belongs.
        const at = row ?? this.rows.at(this.selected);
        if (!at) return;
        if (row) this.select(Number(row.dataset.index));
        const isKey = event.clientX === 0 && event.clientY === 0;
        const box = at.getBoundingClientRect();
        this.menu(event, isKey ? { x: box.left + 40, y: box.bottom } : { x: event.clientX, y: event.clientY });
    }

    /** Leaves only the names that hold the text. */
    private narrow(text: string): void {
        const current = this.entries[this.selected];
        this.filter = text.trim();
        this.entries = filterByName(this.browser.entries, this.filter);
        this.selected = -1;
        this.rows.redraw();
        this.empty.textContent = this.filter ? 'No name holds this text.' : 'This folder is empty.';
        this.empty.hidden = this.entries.length > 0;
        this.count.textContent = this.counted();
        if (this.entries.length === 0) return;
        this.select(Math.max(0, current ? this.entries.indexOf(current) : 0));
    }

    private filterKey(event: KeyboardEvent): void {
        if (event.key === 'Escape') {
            this.field.value = '';
            this.narrow('');
        } else if (!['Enter', 'ArrowDown', 'ArrowUp'].includes(event.key)) return;
        event.preventDefault();
        event.stopPropagation();
        this.grid.focus();
        if (event.key === 'Enter') this.open();
    }

    private type(event: KeyboardEvent): boolean {
        if (this.typed && (event.key === 'Escape' || event.key === 'Backspace')) {
            this.lookFor(event.key === 'Escape' ? '' : this.typed.slice(0, -1));
            return true;
        }
        if ([...event.key].length !== 1 || (event.key === ' ' && !this.typed)) return false;
        this.lookFor(this.typed + event.key.toLocaleLowerCase());
        return true;
    }

    private lookFor(typed: string): void {
        this.endTyping();
        if (!typed) return;
        this.typed = typed;
        const { index, place, matches } = findTyped(this.entries, typed, this.selected);
        if (index >= 0) this.select(index);
        this.find.className = 'typed';
        this.find.replaceChildren(
            icon('search', 's'),
            el('b', {}, typed),
            matches ? `${place + 1} of ${matches}` : 'no such name',
        );
        this.typedTimer = window.setTimeout(() => this.endTyping(), TYPED_FOR);
    }

    private endTyping(): void {
        clearTimeout(this.typedTimer);
        this.find.className = 'hint';
        this.find.textContent = 'Type a name to find it';
        if (!this.typed) return;
        this.typed = '';
        if (this.selected >= 0) this.select(this.selected);
    }

    private counted(): string {
        const blocked = this.entries.filter(entry => entry.blockedReason).length;
        const all = this.browser.entries.length;
        const of = this.filter ? `${this.entries.length.toLocaleString('en-GB')} of ` : '';
        return of + formatCount(all, 'item') + (blocked ? `, ${blocked.toLocaleString('en-GB')} cannot be opened` : '');
    }

    private foot(): HTMLElement {
        const key = (label: string) => el('span', { class: 'kbd' }, label);
        this.find.textContent = 'Type a name to find it';
        this.count.textContent = this.counted();
        this.field.addEventListener('input', () => this.narrow(this.field.value));
        this.field.addEventListener('keydown', event => this.filterKey(event));
        return el(
            'div',
            { class: 'foot' },
            this.count,
            el('span', { class: 'grow' }),
            this.find,
            this.field,
            el('span', { class: 'hint wide' }, key('Space'), 'Preview'),
            el('span', { class: 'hint wide' }, key('↵'), 'Open'),
            el('span', { class: 'hint wide' }, key('Alt'), key('↑'), 'Up'),
        );
    }
}
