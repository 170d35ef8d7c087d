import type { PDFDocumentProxy } from 'pdfjs-dist';
import { el } from '../../dom';

const WIDTH = 92;
const NEAR = '300px 0px';

/** Small pictures of all pages; only those NEAR the visible part are drawn, and let go again when far away. */
export class PdfThumbs {
    readonly element: HTMLElement;
    private readonly list = el('div', { class: 'list' });
    private readonly items: HTMLElement[] = [];
    private readonly waiting = new Set<number>();
    private current = 0;
    private drawing = false;

    constructor(
        private readonly document: PDFDocumentProxy,
        private readonly signal: AbortSignal,
        open: (page: number) => void,
    ) {
        this.element = el('nav', { class: 'pane thumbs', 'aria-label': 'Pages' }, this.list);
        for (let page = 1; page <= document.numPages; page++) {
            const item = el(
                'button',
                { class: 'th', type: 'button', tabindex: '-1', 'aria-label': `Page ${page}` },
                el('span', { class: 'pg' }),
                String(page),
            );
            item.dataset['page'] = String(page);
            this.items.push(item);
        }
        this.list.append(...this.items);
        this.list.addEventListener('click', event => {
            const page = (event.target as HTMLElement).closest<HTMLElement>('.th')?.dataset['page'];
            if (page) open(Number(page));
        });
        this.list.addEventListener('keydown', event => {
            const step = { ArrowDown: 1, ArrowUp: -1 }[event.key];
            if (!step) return;
            event.preventDefault();
            const to = this.items[this.current - 1 + step];
            if (!to) return;
            open(this.current + step);
            to.focus();
        });
    }

    /** Begins to draw; the page itself should be there first. */
    start(): void {
        if (this.signal.aborted) return;
        const watch = new IntersectionObserver(entries => this.watched(entries), { root: this.list, rootMargin: NEAR });
        for (const item of this.items) watch.observe(item);
        this.signal.addEventListener('abort', () => {
            watch.disconnect();
            this.waiting.clear();
        });
    }

    setCurrent(page: number): void {
        if (page === this.current) return;
        const before = this.items[this.current - 1];
        before?.classList.remove('on');
        before?.removeAttribute('aria-current');
        if (before) before.tabIndex = -1;
        this.current = page;
        const item = this.items[page - 1];
        if (!item) return;
        item.classList.add('on');
        item.setAttribute('aria-current', 'page');
        item.tabIndex = 0;
        if (!this.element.hidden) item.scrollIntoView({ block: 'nearest' });
    }

    private watched(entries: IntersectionObserverEntry[]): void {
        for (const entry of entries) {
            const page = Number((entry.target as HTMLElement).dataset['page']);
            if (entry.isIntersecting) {
                this.waiting.add(page);
            } else {
                this.waiting.delete(page);
                entry.target.firstElementChild?.replaceChildren();
            }
        }
        void this.draw();
    }

    private async draw(): Promise<void> {
        if (this.drawing) return;
        this.drawing = true;
        try {
            for (let page = this.next(); page !== undefined; page = this.next()) {
                this.waiting.delete(page);
                await this.drawPage(page);
            }
        } finally {
            this.drawing = false;
        }
    }

    private next(): number | undefined {
        return this.waiting.values().next().value;
    }

    private async drawPage(number: number): Promise<void> {
        const frame = this.items[number - 1]?.firstElementChild as HTMLElement | null | undefined;
        if (!frame || frame.firstElementChild) return;
        try {
            const page = await this.document.getPage(number);
            const natural = page.getViewport({ scale: 1 });
            const viewport = page.getViewport({ scale: (WIDTH * devicePixelRatio) / natural.width });
            frame.style.aspectRatio = `${natural.width} / ${natural.height}`;
            const canvas = el('canvas', { width: Math.round(viewport.width), height: Math.round(viewport.height) });
            await page.render({ canvas, viewport, annotationMode: 1 }).promise;
            if (!this.signal.aborted) frame.replaceChildren(canvas);
        } catch {
            // A page that cannot be drawn keeps its white sheet; the page itself tells more.
        }
    }
}
