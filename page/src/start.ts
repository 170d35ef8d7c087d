import { post } from './bridge';
import { el, icon, iconButton } from './dom';
import { extensionOf, kindOfExtension } from './kinds';
import { openMenu } from './menu';
import type { Shell } from './shell';

const SAMPLES = [
    { label: 'Welcome', file: 'Welcome.md', icon: 'text', family: 'doc' },
    { label: 'Report', file: 'Lake report.pdf', icon: 'pdf', family: 'pdf' },
    { label: 'Picture', file: 'Evening water.png', icon: 'image', family: 'image' },
    { label: 'Table', file: 'Soundings.csv', icon: 'table', family: 'table' },
    { label: 'Code', file: 'soundings.py', icon: 'code', family: 'code' },
];
const STALE_DRAG = 3000;

/** The view of an empty window: where to drop, what to press, and something to try. */
export function showStart(host: HTMLElement, signal: AbortSignal, shell: Shell): void {
    const heading = el('h1', {}, 'Drop a file or folder here');
    const open = el(
        'button',
        { class: 'btn main hero', type: 'button', 'data-focus': true, onclick: () => post({ type: 'open-dialog' }) },
        'Open…',
    );
    const zone = el(
        'div',
        { class: 'zone' },
        dashes(),
        icon('mark', 'mark'),
        heading,
        el(
            'p',
            {},
            'Documents, pictures, sound and video, tables, text, code, folders and archives. Files are only read.',
        ),
        el(
            'div',
            { class: 'act' },
            open,
            el(
                'span',
                { class: 'hint' },
                'or press ',
                el('span', { class: 'kbd' }, 'Ctrl'),
                el('span', { class: 'kbd' }, 'O'),
            ),
        ),
    );
    const chips = SAMPLES.map(sample =>
        el(
            'button',
            { class: 'btn chip', type: 'button', onclick: () => post({ type: 'open-sample', name: sample.file }) },
            icon(sample.icon, `s ${sample.family}`),
            sample.label,
        ),
    );
    const recent = el('div', { class: 'samples recent' });
    const samples = el('div', { class: 'samples' }, el('span', { class: 'lead' }, 'Try a sample'), ...chips);
    host.append(el('div', { class: 'stage' }, el('div', { class: 'card start enter' }, zone, recent, samples)));
    const showRecent = () => recent.replaceChildren(...recentRow(shell));
    shell.addEventListener('change', showRecent, { signal });
    showRecent();
    followDrags(signal, over => {
        zone.classList.toggle('over', over);
        heading.textContent = over ? 'Let go to open' : 'Drop a file or folder here';
    });
}

const MOST_RECENT = 5;

/** What was opened before, as far as this shell keeps it. */
function recentRow(shell: Shell): HTMLElement[] {
    const { recent } = shell;
    if (!recent || (recent.keep && recent.files.length === 0)) return [];
    const files = recent.files.slice(0, MOST_RECENT).map(({ id, name }) => {
        const kind = kindOfExtension(extensionOf(name));
        const open = () => post({ type: 'open-recent', id });
        return el(
            'button',
            { class: 'btn chip', type: 'button', title: name, onclick: open },
            icon(kind.icon, `s ${kind.family}`),
            name,
        );
    });
    const more = iconButton('more', 'Recent files', () => {
        const keep = {
            label: recent.keep ? 'Do not keep' : 'Keep recent files',
            run: () => post({ type: 'keep-recent', keep: !recent.keep }),
        };
        const clear = { label: 'Clear', run: () => post({ type: 'clear-recent' }) };
        openMenu(more, 'Recent files', [recent.files.length > 0 ? [clear, keep] : [keep]]);
    });
    return [el('span', { class: 'lead' }, 'Recent'), ...files, more];
}

function dashes(): SVGSVGElement {
    const svg = icon('', 'dash'),
        rect = document.createElementNS(svg.namespaceURI, 'rect');
    for (const [name, value] of Object.entries({ x: '.75', y: '.75', width: '100%', height: '100%', rx: '12' }))
        rect.setAttribute(name, value);
    svg.replaceChildren(rect);
    return svg;
}

/**
 * The shell takes the drop, so the page may see a drag come in and never hear of it again: whatever tells that it is
 * over ends it.
 */
function followDrags(signal: AbortSignal, changed: (over: boolean) => void): void {
    let timer = 0;
    const end = () => {
        clearTimeout(timer);
        changed(false);
    };
    const here = (event: DragEvent) => {
        if (!event.dataTransfer?.types.includes('Files')) return;
        clearTimeout(timer);
        timer = window.setTimeout(end, STALE_DRAG);
        changed(true);
    };
    const left = (event: DragEvent) => {
        if (event.relatedTarget === null) end();
    };
    window.addEventListener('dragenter', here, { signal });
    window.addEventListener('dragover', here, { signal });
    window.addEventListener('dragleave', left, { signal });
    for (const type of ['drop', 'dragend', 'pointermove', 'pointerdown', 'keydown', 'blur'])
        window.addEventListener(type, end, { signal });
    signal.addEventListener('abort', () => clearTimeout(timer));
}
