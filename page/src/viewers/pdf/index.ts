import type { PDFDocumentProxy } from 'pdfjs-dist';
import type { Doc } from '../../doc';
import { el, iconButton } from '../../dom';
import { formatSize } from '../../format';
import type { Keymap } from '../../keys';
import type { ViewContext } from '../../view';
import { FindBar } from '../shared/findbar';
import { setPressed } from '../shared/pressed';
import { percent } from '../shared/zoom';
import { type OpenPdf, openPdf } from './open';
import { askPassword } from './password';
import { PdfThumbs } from './thumbs';
import './pdf.css';

type Viewer = typeof import('pdfjs-dist/web/pdf_viewer.mjs');

interface FindReport {
    matchesCount: { current: number; total: number };
    /** Only with a change of state, not with a mere change of the count. */
    state?: number;
}

const FIRST_PAGE_MILLISECONDS = 4000;
const SMALLEST_SCALE = 0.1;
const LARGEST_SCALE = 10;
const WIDE_ENOUGH = 860;
const WHEEL_PAUSE = 250;

export async function show(host: HTMLElement, doc: Doc, view: ViewContext): Promise<void> {
    const pdf: OpenPdf = await openPdf(doc, view.signal);
    let prompted: () => void;
    const promptShown = new Promise<void>(resolve => (prompted = resolve));
    let hadPrompt = false;
    pdf.onPassword = (again, answer) => {
        hadPrompt = true;
        askPassword(host, doc.name, again, answer);
        prompted();
    };
    const opened = pdf.document.then(async document => {
        host.replaceChildren();
        await new PdfView(host, doc, view, document, pdf.viewer).start();
    });
    // With a password to ask for, what is visible first is the question.
    await Promise.race([
        opened.catch((error: unknown) => {
            if (!hadPrompt || view.signal.aborted) throw error;
            host.replaceChildren(
                el(
                    'div',
                    { class: 'stage pdf-stage' },
                    el(
                        'div',
                        { class: 'card pdf-ask' },
                        el('p', {}, error instanceof Error ? error.message : String(error)),
                    ),
                ),
            );
        }),
        promptShown,
    ]);
}

class PdfView {
    private readonly pages = el('div', { class: 'pdfViewer' });
    private readonly container = el(
        'div',
        { class: 'pdf-view', tabindex: '0', role: 'document', 'data-focus': '' },
        this.pages,
    );
    private readonly pageField = el('input', { 'aria-label': 'Page', inputmode: 'numeric', spellcheck: 'false' });
    private readonly value = el('button', { class: 'btn value', type: 'button', title: 'Actual size (Ctrl 0)' });
    private readonly fitButton = iconButton('fit-width', 'Fit width', () =>
        this.setScale(this.slides ? 'page-fit' : 'page-width'),
    );
    private readonly sideButton = iconButton('sidebar', 'Pages (F9)', () => this.toggleSide());
    private readonly slides: boolean;
    private readonly bus;
    private readonly links;
    private readonly viewer;
    private readonly find: FindBar;
    private readonly thumbs: PdfThumbs;
    private lastWheel = 0;

    constructor(
        private readonly host: HTMLElement,
        private readonly doc: Doc,
        private readonly view: ViewContext,
        private readonly document: PDFDocumentProxy,
        private readonly library: Viewer,
    ) {
        const { signal } = view;
        this.slides = doc.kind === 'slides';
        host.append(this.container);
        host.classList.toggle('pdf-slides', this.slides);
        this.bus = new library.EventBus();
        this.links = new library.PDFLinkService({ eventBus: this.bus });
        // Links out of the document lead nowhere; their address is told instead.
        this.links.addLinkAttributes = (link: HTMLAnchorElement, url: string) => {
            link.href = '';
            link.title = url;
            link.onclick = () => {
                view.chrome.status(url);
                return false;
            };
        };
        const finder = new library.PDFFindController({
            linkService: this.links,
            eventBus: this.bus,
            updateMatchesCountOnProgress: true,
        });
        // The component takes an abort signal, which its typings leave out.
        const options: ConstructorParameters<Viewer['PDFViewer']>[0] & { abortSignal: AbortSignal } = {
            container: this.container,
            viewer: this.pages,
            eventBus: this.bus,
            linkService: this.links,
            findController: finder,
            annotationMode: 1,
            annotationEditorMode: -1,
            enableAutoLinking: false,
            abortSignal: signal,
        };
        this.viewer = new library.PDFViewer(options);
        this.links.setViewer(this.viewer);
        this.find = new FindBar({
            query: query => this.search('', query, false),
            step: direction => this.search('again', this.find.text, direction < 0),
            closed: () => {
                this.bus.dispatch('findbarclose', { source: this });
                this.container.focus();
            },
        });
        this.thumbs = new PdfThumbs(document, signal, page => (this.viewer.currentPageNumber = page));
        this.makeBar();
        host.append(this.thumbs.element, this.find.element);
        signal.addEventListener('abort', () => {
            this.viewer.setDocument(null as unknown as PDFDocumentProxy);
            host.classList.remove('pdf-side', 'pdf-slides');
        });
    }

    async start(): Promise<void> {
        const { chrome, signal } = this.view;
        const count = this.document.numPages;
        const word = this.slides ? 'slide' : 'page';
        chrome.meta(`${count.toLocaleString('en')} ${word}${count === 1 ? '' : 's'} · ${formatSize(this.doc.size)}`);
        void this.describe();
        chrome.tools(...(count > 1 ? [this.sideButton] : []), this.find.button);
        this.setSide(count > 1 && this.host.clientWidth > WIDE_ENOUGH ? 'open' : 'closed');

        const rendered = new Promise<void>(resolve => {
            this.bus.on('pagerendered', () => resolve());
            const timer = setTimeout(resolve, FIRST_PAGE_MILLISECONDS);
            signal.addEventListener('abort', () => {
                clearTimeout(timer);
                resolve();
            });
        });
        this.bus.on('pagesinit', () => {
            if (this.slides) this.viewer.scrollMode = this.library.ScrollMode.PAGE;
            this.setScale(this.slides ? 'page-fit' : 'auto');
        });
        this.bus.on('pagechanging', ({ pageNumber }: { pageNumber: number }) => this.showPage(pageNumber));
        this.bus.on('scalechanging', () => this.showScale());
        const reportFind = ({ matchesCount: { current, total }, state }: FindReport) => {
            const missing = state === this.library.FindState.NOT_FOUND;
            this.find.report(
                !this.find.text ? '' : missing ? 'None found' : total ? `${current} of ${total}` : 'Searching',
            );
        };
        this.bus.on('updatefindmatchescount', reportFind);
        this.bus.on('updatefindcontrolstate', reportFind);

        const resized = new ResizeObserver(() => this.refit());
        resized.observe(this.container);
        signal.addEventListener('abort', () => resized.disconnect());
        this.view.keys(this.keymap());
        this.container.addEventListener('wheel', event => this.wheel(event), { passive: false });

        this.viewer.setDocument(this.document);
        this.links.setDocument(this.document);
        this.showPage(1);
        await rendered;
        signal.throwIfAborted();
        this.thumbs.start();
    }

    private async describe(): Promise<void> {
        const { info } = await this.document.getMetadata().catch(() => ({ info: {} as Record<string, unknown> }));
        const facts = info as Record<string, unknown>;
        const rows = [
            ['Title', 'Title'],
            ['Author', 'Author'],
            ['Subject', 'Subject'],
            ['Made with', 'Creator'],
            ['Producer', 'Producer'],
            ['PDF version', 'PDFFormatVersion'],
        ] as const;
        const told = rows.flatMap(([name, key]) => {
            const value = facts[key];
            return typeof value === 'string' && value.trim() ? [[name, value.trim()] as const] : [];
        });
        this.view.details([['Pages', this.document.numPages.toLocaleString('en')], ...told]);
    }

    private makeBar(): void {
        const count = this.document.numPages;
        this.value.addEventListener('click', () => this.setScale('1'));
        this.pageField.addEventListener('focus', () => this.pageField.select());
        this.pageField.addEventListener('keydown', event => {
            if (event.key !== 'Enter' && event.key !== 'Escape') return;
            event.preventDefault();
            const page = Number.parseInt(this.pageField.value, 10);
            if (event.key === 'Enter' && page >= 1) this.viewer.currentPageNumber = Math.min(page, count);
            this.showPage(this.viewer.currentPageNumber);
            this.container.focus();
        });
        this.pageField.addEventListener('blur', () => this.showPage(this.viewer.currentPageNumber));
        const zoom = [
            el(
                'span',
                { class: 'zoomset' },
                iconButton('minus', 'Zoom out (Ctrl −)', () => this.viewer.decreaseScale(), 's'),
            ),
            this.value,
            el(
                'span',
                { class: 'zoomset' },
                iconButton('plus', 'Zoom in (Ctrl +)', () => this.viewer.increaseScale(), 's'),
            ),
            this.fitButton,
        ];
        const steps = [
            iconButton('chevron-left', 'Previous page', () => void this.viewer.previousPage()),
            el('span', { class: 'pageno' }, this.pageField, `of ${count.toLocaleString('en')}`),
            iconButton('chevron-right', 'Next page', () => void this.viewer.nextPage()),
        ];
        this.view.bar(...(count > 1 ? [steps] : []), zoom);
    }

    private showPage(page: number): void {
        if (document.activeElement !== this.pageField) this.pageField.value = String(page);
        this.thumbs.setCurrent(page);
    }

    private showScale(): void {
        this.value.textContent = percent(this.viewer.currentScale);
        const fitted = this.viewer.currentScaleValue === (this.slides ? 'page-fit' : 'page-width');
        setPressed(this.fitButton, fitted);
    }

    private setScale(value: string): void {
        this.viewer.currentScaleValue = value;
        this.showScale();
    }

    private refit(): void {
        const value = this.viewer.currentScaleValue;
        if (value && Number.isNaN(Number(value)) && this.viewer.pagesCount > 0) this.viewer.currentScaleValue = value;
        this.viewer.update();
    }

    private setSide(state: 'open' | 'closed'): void {
        const open = state === 'open';
        this.host.classList.toggle('pdf-side', open);
        this.thumbs.element.hidden = !open;
        setPressed(this.sideButton, open);
    }

    private toggleSide(): void {
        if (this.document.numPages > 1) this.setSide(this.thumbs.element.hidden ? 'open' : 'closed');
    }

    private search(type: '' | 'again', query: string, findPrevious: boolean): void {
        this.bus.dispatch('find', {
            source: this,
            type,
            query,
            caseSensitive: this.find.options.matchCase,
            entireWord: this.find.options.wholeWord,
            highlightAll: true,
            findPrevious,
            matchDiacritics: false,
        });
    }

    private wheel(event: WheelEvent): void {
        if (event.ctrlKey) {
            event.preventDefault();
            const scale = this.viewer.currentScale * Math.exp(-event.deltaY / 300);
            this.setScale(String(Math.max(SMALLEST_SCALE, Math.min(LARGEST_SCALE, scale))));
        } else if (this.slides && this.container.scrollHeight <= this.container.clientHeight + 1) {
            event.preventDefault();
            if (event.timeStamp - this.lastWheel < WHEEL_PAUSE || event.deltaY === 0) return;
            this.lastWheel = event.timeStamp;
            this.turn(event.deltaY > 0 ? 1 : -1);
        }
    }

    private turn(direction: 1 | -1): void {
        if (direction > 0) this.viewer.nextPage();
        else this.viewer.previousPage();
    }

    private keymap(): Keymap {
        const { viewer } = this;
        const slides = (act: () => unknown) => () => (this.slides ? (act() ?? true) : false);
        const sideways = (direction: 1 | -1) => () => {
            const isFree = !this.view.neighbours && (this.slides || !this.scrollsSideways());
            return isFree ? (this.turn(direction) ?? true) : false;
        };
        return [
            ...this.find.keys,
            { keys: 'F9', label: 'Pages at the side', run: () => this.toggleSide() },
            { keys: ['+', '=', 'Ctrl++', 'Ctrl+='], label: 'Zoom in', run: () => viewer.increaseScale() },
            { keys: ['-', '_', 'Ctrl+-'], label: 'Zoom out', run: () => viewer.decreaseScale() },
            { keys: ['1', 'Ctrl+0'], label: 'Actual size', run: () => this.setScale('1') },
            { keys: '0', label: 'Fit', run: () => this.setScale(this.slides ? 'page-fit' : 'page-width') },
            { keys: ['Home', 'Ctrl+Home'], label: 'First page', run: () => this.goTo(1) },
            { keys: ['End', 'Ctrl+End'], label: 'Last page', run: () => this.goTo(this.document.numPages) },
            { keys: ['PageDown', 'Space'], run: slides(() => this.turn(1)) },
            { keys: ['PageUp', 'Shift+Space'], run: slides(() => this.turn(-1)) },
            { keys: 'ArrowLeft', run: sideways(-1) },
            { keys: 'ArrowRight', run: sideways(1) },
        ];
    }

    private goTo(page: number): void {
        this.viewer.currentPageNumber = page;
    }

    private scrollsSideways(): boolean {
        return this.container.scrollWidth > this.container.clientWidth + 1;
    }
}
