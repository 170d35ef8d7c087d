import type { Entry } from './bridge';
import { el, icon } from './dom';
import { formatDate, formatSize } from './format';
import { kindOfEntry } from './kinds';

/** One row of a listing. An entry that cannot be opened says why in place of its facts. */
export function entryRow(entry: Entry, index: number, selected: boolean, typed: string): HTMLElement {
    const kind = kindOfEntry(entry),
        reason = entry.blockedReason;
    const name = el('div', { role: 'gridcell' }, icon(kind.icon, kind.family), entryName(entry, selected ? typed : ''));
    const cells = reason
        ? [el('span', { class: 'why', role: 'gridcell' }, icon('lock', 's'), el('q', { title: reason }, reason))]
        : [
              el('span', { class: 'col-kind', role: 'gridcell' }, kind.label),
              el('span', { class: 'col-size', role: 'gridcell' }, entry.isDirectory ? '—' : formatSize(entry.size)),
              el('span', { class: 'col-modified', role: 'gridcell' }, formatDate(entry.modified)),
          ];
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
export function entryName(entry: Entry, typed: string): HTMLElement {
    const marked = entry.name.toLocaleLowerCase().startsWith(typed) ? typed.length : 0;
    return el(
        'b',
        { title: entry.name },
        marked > 0 && el('em', {}, entry.name.slice(0, marked)),
        entry.name.slice(marked),
    );
}
