import type { Entry } from './bridge';
import type { Browser } from './browser';
import { el, icon } from './dom';
import { formatCount, formatDate, formatSize } from './format';
import { kindOfEntry } from './kinds';
import { type Column, findTyped, firstDirection } from './sorting';
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
    selected(entry: Entry): void;
}

/** The list of one folder or archive level. */
export function showListing(host: HTMLElement, signal: AbortSignal, browser: Browser, page: ListingHost): void {
    new ListingView(host, signal, browser, page);
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
        if (this.entries.length === 0) this.scroller.append(el('p', { class: 'empty' }, 'This folder is empty.'));
        this.sizer.addEventListener('pointerdown', event => this.pick(event));
        this.sizer.addEventListener('dblclick', () => this.open());
        this.rows = new VirtualRows(
            this.scroller,
            this.sizer,
            { count: this.entries.length, rowHeight: ROW, render: i => this.row(i) },
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
        this.entries = browser.sort(column, browser.column === column ? turned : firstDirection(column));
        this.selected = current ? this.entries.indexOf(current) : -1;
        this.showHead();
        this.head.querySelector<HTMLElement>('.sorted')?.focus();
        this.rows.redraw();
        if (this.selected >= 0) this.select(this.selected);
    }

    private row(index: number): HTMLElement {
        const entry = this.entries[index]!,
            kind = kindOfEntry(entry),
            reason = entry.blockedReason;
        const name = el('div', { role: 'gridcell' }, icon(kind.icon, kind.family), this.name(entry, index));
        const cells = reason
            ? [el('span', { class: 'why', role: 'gridcell' }, icon('lock', 's'), el('q', { title: reason }, reason))]
            : [
                  el('span', { class: 'col-kind', role: 'gridcell' }, kind.label),
                  el('span', { class: 'col-size', role: 'gridcell' }, entry.isDirectory ? '—' : formatSize(entry.size)),
                  el('span', { class: 'col-modified', role: 'gridcell' }, formatDate(entry.modified)),
              ];
        const selected = index === this.selected;
        return el(
            'div',
            {
                class: `row${reason ? ' off' : ''}${selected ? ' sel' : ''}`,
                role: 'row',
                id: `row-${index}`,
                'data-index': index,
                'aria-rowindex': index + 2,
                'aria-selected': String(selected),
                'aria-disabled': reason ? 'true' : undefined,
            },
            name,
            ...cells,
        );
    }

    /** The name, with the letters typed so far marked on the row they led to. */
    private name(entry: Entry, index: number): HTMLElement {
        const marked =
            index === this.selected && entry.name.toLocaleLowerCase().startsWith(this.typed) ? this.typed.length : 0;
        return el(
            'b',
            { title: entry.name },
            marked > 0 && el('em', {}, entry.name.slice(0, marked)),
            entry.name.slice(marked),
        );
    }

    private select(index: number): void {
        const before = this.selected;
        this.selected = index;
        this.rows.reveal(index);
        for (const at of new Set([before, index])) {
            const row = this.rows.at(at);
            row?.classList.toggle('sel', at === index);
            row?.setAttribute('aria-selected', String(at === index));
            row?.querySelector('b')?.replaceWith(this.name(this.entries[at]!, at));
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
        if (event.target !== this.grid || event.altKey || event.metaKey) return;
        // The selection shows where the keys go; the ring is for those who use them.
        this.grid.classList.add('keys');
        if (event.ctrlKey) {
            const entry = this.entries[this.selected];
            if (event.key.toLowerCase() !== 'c' || event.shiftKey || !entry) return;
            this.page.copyPath(entry);
        } else if (!this.move(event.key) && !this.type(event)) return;
        event.preventDefault();
    }

    private move(key: string): boolean {
        const last = this.entries.length - 1,
            step = this.rows.pageStep;
        const to = {
            ArrowUp: this.selected - 1,
            ArrowDown: this.selected + 1,
            Home: 0,
            End: last,
            PageUp: this.selected - step,
            PageDown: this.selected + step,
        }[key];
        if (to !== undefined) {
            this.endTyping();
            if (last >= 0) this.select(Math.max(0, Math.min(last, to)));
        } else if (key === 'Enter') this.open();
        else return false;
        return true;
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

    private foot(): HTMLElement {
        const blocked = this.entries.filter(entry => entry.blockedReason).length;
        const count =
            formatCount(this.entries.length, 'item') +
            (blocked ? `, ${blocked.toLocaleString('en-GB')} cannot be opened` : '');
        const key = (label: string) => el('span', { class: 'kbd' }, label);
        this.find.textContent = 'Type a name to find it';
        return el(
            'div',
            { class: 'foot' },
            el('span', {}, count),
            el('span', { class: 'grow' }),
            this.find,
            el('span', { class: 'hint wide' }, key('↵'), 'Open'),
            el('span', { class: 'hint wide' }, key('Alt'), key('↑'), 'Up'),
        );
    }
}
