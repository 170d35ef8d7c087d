import type { Entry, OpenFile } from './bridge';
import { el, icon, iconButton } from './dom';
import { formatDate, formatSize } from './format';
import { type Kind, kindOfEntry, kindOfExtension } from './kinds';

export interface Facts {
    name: string;
    kind: Kind;
    label: string;
    rows: [name: string, value: string][];
    note?: { symbol: string; text: string };
}

/** What is known of a list's entry; `inside` is the path of its list. */
export function factsOfEntry(entry: Entry, inside: string): Facts {
    const { label } = kindOfEntry({ ...entry, blockedReason: undefined });
    return {
        name: entry.name,
        kind: kindOfEntry(entry),
        label,
        rows: [
            ...(entry.isDirectory ? [] : [['Size', formatSize(entry.size)] satisfies [string, string]]),
            ['Modified', formatDate(entry.modified)],
            ['Inside', inside],
        ],
        note: entry.blockedReason ? { symbol: 'lock', text: entry.blockedReason } : undefined,
    };
}

/**
 * What is known of a shown document, and of the entry it was opened from. The shell tells the size of what it serves
 * only.
 */
export function factsOfFile(file: OpenFile, entry: Entry | null, inside: string): Facts {
    const kind = kindOfExtension(file.originalExt || file.ext),
        shownAs = kindOfExtension(file.ext).label;
    const converted = file.ext !== file.originalExt && shownAs !== kind.label;
    const rows: Facts['rows'] = [];
    if (entry || !converted) rows.push(['Size', formatSize(entry ? entry.size : file.size)]);
    if (entry) rows.push(['Modified', formatDate(entry.modified)], ['Inside', inside]);
    if (converted) rows.push(['Shown as', shownAs]);
    return {
        name: file.name,
        kind,
        label: kind.label,
        rows,
        note: converted
            ? { symbol: 'info', text: 'Converted for viewing. The original file was not changed.' }
            : undefined,
    };
}

export const textOf = (facts: Facts): string =>
    [['Name', facts.name], ['Kind', facts.label], ...facts.rows].map(([name, value]) => `${name}: ${value}`).join('\n');

/** The panel at the right that tells about what is selected or shown. It stays open from one document to the next. */
export class Details {
    /** The switch for the title strip; only there while something can be told. */
    readonly button = iconButton('details', 'Details (Ctrl+I)', () => this.toggle());
    readonly element = el('aside', { class: 'pane details', 'aria-label': 'Details', hidden: true });
    private facts: Facts | null = null;
    private wanted = false;

    constructor(private readonly copy: (text: string) => void) {}

    get available(): boolean {
        return this.facts !== null;
    }

    get open(): boolean {
        return this.wanted && this.available;
    }

    show(facts: Facts | null): void {
        this.facts = facts;
        this.draw();
    }

    /** Adds to what is told; a name that stands already takes the new value. */
    add(rows: readonly (readonly [string, string])[]): void {
        if (!this.facts) return;
        const known = new Map(this.facts.rows);
        for (const [name, value] of rows) known.set(name, value);
        this.show({ ...this.facts, rows: [...known] });
    }

    toggle(): void {
        this.wanted = !this.wanted;
        this.draw();
    }

    private draw(): void {
        const { facts } = this;
        this.button.classList.toggle('on', this.open);
        this.button.setAttribute('aria-pressed', String(this.open));
        this.element.hidden = !this.open;
        document.documentElement.dataset.details = this.open ? 'on' : 'off';
        if (!facts || !this.open) return;
        this.element.replaceChildren(
            el(
                'header',
                {},
                el('b', {}, 'Details'),
                iconButton('close', 'Close (Esc)', () => this.toggle()),
            ),
            el(
                'div',
                { class: 'who' },
                icon(facts.kind.icon, facts.kind.family),
                el('div', {}, el('b', {}, facts.name), el('span', {}, facts.label)),
            ),
            el('dl', {}, ...facts.rows.flatMap(([name, value]) => [el('dt', {}, name), el('dd', {}, value)])),
            facts.note ? el('p', { class: 'note' }, icon(facts.note.symbol, 's'), el('span', {}, facts.note.text)) : '',
            el('span', { class: 'grow' }),
            el(
                'div',
                { class: 'foot' },
                el(
                    'button',
                    { class: 'btn', type: 'button', onclick: () => this.copy(textOf(facts)) },
                    icon('copy', 's'),
                    'Copy details',
                ),
            ),
        );
    }
}
