import { makeBar } from './bar';
import { type OpenFile, post } from './bridge';
import type { Chrome } from './chrome';
import { type Doc, makeDoc, ReadFailure, Refusal } from './doc';
import { el, icon } from './dom';
import { answer, type KeyGroup, type Keymap } from './keys';
import { guardLinks } from './links';
import { type Choice, labelOf, loadViewer, nextBest, type ViewerName, viewerFor } from './registry';
import type { Mounted } from './stage';
import type { TextSize } from './textsize';
import type { CopySource, Neighbours, ViewContext, ViewPrefs } from './view';

const UNSAID = 'The file is damaged, or it is not what its name says.';

/** What an opening needs from the page around it. */
export interface OpeningHost {
    readonly chrome: Chrome;
    readonly prefs: Pick<ViewPrefs, 'showZoom' | 'airOutline'> & EventTarget;
    readonly textSize: TextSize;
    readonly neighbours: Neighbours | null;
    details(rows: readonly (readonly [string, string])[]): void;
}

/** One document on its way into a view, and what its viewer has said since. */
export class Opening {
    readonly doc: Doc;
    viewer: ViewerName = 'hex';
    /** The viewer that fits the file by itself. */
    chosen: ViewerName = 'hex';
    copySource: CopySource = () => null;
    readonly keys: KeyGroup[] = [];
    private notices: string[] = [];
    private readonly noticeBox = el('div', { class: 'notice', role: 'status', hidden: true });

    constructor(
        readonly file: OpenFile,
        private readonly view: Mounted,
        private readonly page: OpeningHost,
    ) {
        this.doc = makeDoc(file);
    }

    /** Shows the document as asked, or as its bytes suggest, and goes on to the next best view when one fails. */
    async show(as?: ViewerName): Promise<void> {
        const { signal } = this.view.abort;
        const choice: Choice = await viewerFor(this.doc, signal);
        this.chosen = choice.viewer;
        if (choice.reason && !as) this.notice(choice.reason);
        let waiting = [as ?? choice.viewer];
        for (let next = waiting.shift(); next; next = waiting.shift()) {
            try {
                this.viewer = next;
                await this.mount(next);
                return;
            } catch (error) {
                signal.throwIfAborted();
                if (error instanceof ReadFailure || error instanceof Refusal) throw error;
                if (waiting.length === 0) waiting = as ? [] : await nextBest(this.doc, next, signal);
                const best = waiting[0];
                if (!best) throw new Error(sentenceOf(error), { cause: error });
                this.notice(`${sentenceOf(error)} Shown as ${labelOf(best).toLowerCase()}.`);
            }
        }
    }

    private async mount(name: ViewerName): Promise<void> {
        const { host, abort } = this.view;
        const viewer = await loadViewer(name);
        abort.signal.throwIfAborted();
        host.replaceChildren();
        this.keys.length = 0;
        const run = new AbortController();
        const signal = AbortSignal.any([abort.signal, run.signal]);
        try {
            await viewer.show(host, this.doc, this.context(signal));
        } catch (error) {
            run.abort();
            throw error;
        }
        this.showNotices();
    }

    private notice(text: string): void {
        this.notices.push(text);
        if (this.view.host.childElementCount > 0) this.showNotices();
    }

    private showNotices(): void {
        const { host } = this.view;
        if (this.notices.length === 0) return;
        this.noticeBox.hidden = false;
        this.noticeBox.replaceChildren(icon('info', 's'), el('span', {}, this.notices.at(-1) ?? ''));
        host.classList.add('noted');
        if (!this.noticeBox.isConnected) host.append(this.noticeBox);
    }

    private context(signal: AbortSignal, chrome: Chrome = this.page.chrome): ViewContext {
        const { page } = this,
            { prefs } = page;
        const whileShown =
            <A extends unknown[]>(act: (...args: A) => void) =>
            (...args: A) => {
                if (!signal.aborted) act(...args);
            };
        const { neighbours } = page;
        const keys = (table: Keymap, title = labelOf(this.viewer)) => {
            this.keys.push({ title, table });
            document.addEventListener('keydown', event => answer(table, event), { signal });
        };
        return {
            signal,
            chrome: {
                meta: whileShown(text => chrome.meta(text)),
                tools: whileShown((...buttons) => chrome.tools(...buttons)),
                status: whileShown(text => chrome.status(text)),
            },
            prefs: {
                get showZoom() {
                    return prefs.showZoom;
                },
                get airOutline() {
                    return prefs.airOutline;
                },
                onChange: callback => prefs.addEventListener('change', callback, { signal }),
            },
            neighbours: neighbours && { ...neighbours, go: whileShown(delta => neighbours.go(delta)) },
            bar: (...groups) => makeBar(this.view.host, signal, groups),
            keys,
            details: whileShown(rows => page.details(rows)),
            copies: source => {
                this.copySource = source;
            },
            notice: whileShown(text => this.notice(text)),
            zoomable: element => keys(page.textSize.follow(element, signal), 'Size'),
            guard: inner => guardLinks(inner, address => chrome.status(address), signal),
            nested: (inner, own = chrome) => this.context(AbortSignal.any([signal, inner]), own),
            post: whileShown(post),
        };
    }
}

/** Viewers speak to the user through plain errors; what the engine throws is not made for reading. */
export function sentenceOf(error: unknown): string {
    const isOurs = error instanceof Error && [Error, ReadFailure, Refusal].includes(error.constructor as typeof Error);
    return isOurs && error.message ? error.message : UNSAID;
}
