import { Appearance } from './appearance';
import { makeBar } from './bar';
import {
    type Busy,
    type Failure,
    type FromShell,
    type NativePreview,
    type OpenContainer,
    type OpenFile,
    post,
} from './bridge';
import { Browser } from './browser';
import { showBusy } from './busy';
import { type Chrome, TitleStrip } from './chrome';
import { clipboardAnswered, copyText } from './clipboard';
import { Details, factsOfEntry, factsOfFile } from './details';
import { makeDoc } from './doc';
import { el, iconButton, isEditable } from './dom';
import { CANCELLED, showError } from './error';
import { formatCount } from './format';
import { extensionOf, type Kind, kindOfEntry, kindOfExtension } from './kinds';
import { showListing } from './listing';
import { entryPath } from './path';
import { loadViewer, viewerFor } from './registry';
import { RequestOrder } from './requestorder';
import { type Mounted, Stage } from './stage';
import { showStart } from './start';
import { Trail } from './trail';
import type { ViewContext } from './view';

type State = 'start' | 'busy' | 'error' | 'listing' | 'shown' | 'native';

const BUSY_AFTER = 250;
// Right after "init" the shell may ask for a file; the start view would only flash.
const START_AFTER_INIT = 60;
const START_WITHOUT_SHELL = 600;

/** The page: takes the shell's messages, decides which view stands, and offers the keys that work everywhere. */
export class App {
    readonly appearance = new Appearance();
    private readonly order = new RequestOrder();
    private readonly browser = new Browser(post);
    private readonly stage = new Stage();
    private readonly trail = new Trail();
    private readonly details = new Details(text => void this.copy(text, 'Details'));
    private readonly strip: TitleStrip;
    private state: State | null = null;
    private busyTimer = 0;
    private startTimer = 0;

    constructor(body: HTMLElement) {
        this.strip = new TitleStrip(body, { button: this.details.button, offered: () => this.details.available });
        body.append(this.trail.element, this.stage.element, this.details.element);
        window.addEventListener('keydown', event => this.key(event, event => this.command(event)));
        // Editors have their own idea of Alt with the arrows, so these come first.
        window.addEventListener('keydown', event => this.key(event, event => event.altKey && this.travel(event)), {
            capture: true,
        });
        body.addEventListener('click', event => this.follow(event));
        // The engine's menu offers to reload the page, which would lose what is shown.
        body.addEventListener('contextmenu', event => {
            if (!isEditable(event.target) && !getSelection()?.toString()) event.preventDefault();
        });
        window.addEventListener('drop', event => event.preventDefault());
    }

    begin(): void {
        this.startTimer = window.setTimeout(() => this.showStart(), START_WITHOUT_SHELL);
    }

    receive(message: FromShell): void {
        switch (message.type) {
            case 'init':
                this.setFullScreen(message.maximized);
                clearTimeout(this.startTimer);
                this.startTimer = window.setTimeout(() => this.showStart(), START_AFTER_INIT);
                return;
            case 'busy':
                return this.busy(message);
            case 'open':
                if (!this.order.accepts(message.requestId)) return;
                return message.kind === 'container' ? this.list(message) : void this.open(message);
            case 'error':
                if (this.order.accepts(message.requestId)) this.fail(message);
                return;
            case 'native-preview':
                if (this.order.accepts(message.requestId)) this.standAside(message);
                return;
            case 'clipboard-result':
                return clipboardAnswered(message.copyRequestId, message.success);
            case 'state':
                return this.setFullScreen(message.maximized);
            case 'active':
                return void document.documentElement.classList.toggle('idle', !message.value);
        }
    }

    private setFullScreen(on: boolean): void {
        document.documentElement.dataset.full = on ? 'on' : 'off';
    }

    private enter(state: State, viewer: string = state, detail = this.strip.name): void {
        this.state = state;
        document.documentElement.dataset.state = state;
        document.documentElement.dataset.viewer = viewer;
        // Read from outside the page: which view stands, then what is in it.
        document.title = [state, viewer === state ? '' : viewer, detail].filter(Boolean).join(' ');
    }

    private showStart(): void {
        if (this.state !== null) return;
        this.strip.show('');
        this.stage.show('view', showStart);
        this.enter('start');
    }

    private busy(message: Busy): void {
        this.order.begin(message.requestId);
        this.browser.begun(message.containerToken);
        this.enter('busy');
        clearTimeout(this.busyTimer);
        const since = performance.now();
        this.busyTimer = window.setTimeout(() => {
            const kind = kindOfExtension(extensionOf(message.name));
            // A document that has arrived and is loading has set up the strips already.
            if (!this.stage.isLoading) {
                this.details.show(null);
                this.strip.show(message.name, kind);
                if (!message.containerToken) this.trail.show(null);
            }
            this.stage.cover('view', (host, signal) =>
                showBusy(host, signal, message.name, kind, since, () => post({ type: 'cancel-preview' })),
            );
        }, BUSY_AFTER);
    }

    private async open(message: OpenFile): Promise<void> {
        const kind = kindOfExtension(message.originalExt || message.ext);
        const doc = makeDoc(message);
        const view = this.stage.load(message.containerToken ? 'body deep' : 'body');
        this.browser.begun(message.containerToken);
        this.enter('busy');
        this.details.show(factsOfFile(message, this.browser.opened, this.browser.listing?.path ?? ''));
        this.strip.show(message.name, kind);
        this.showTrail(message.containerToken, message.name);
        const { signal } = view.abort;
        try {
            const name = await viewerFor(doc, signal);
            const viewer = await loadViewer(name);
            if (signal.aborted) return;
            await viewer.show(view.host, doc, this.context(view, signal));
            if (!this.stage.reveal(view)) return;
            clearTimeout(this.busyTimer);
            this.enter('shown', name);
        } catch (error) {
            if (signal.aborted) return;
            this.fail({
                type: 'error',
                name: message.name,
                requestId: message.requestId,
                containerToken: message.containerToken,
                message: sentenceOf(error),
            });
        }
    }

    private context(view: Mounted, signal: AbortSignal): ViewContext {
        const whileShown =
            <A extends unknown[]>(act: (...args: A) => void) =>
            (...args: A) => {
                if (!signal.aborted) act(...args);
            };
        const { strip, appearance, browser } = this;
        const chrome: Chrome = {
            meta: whileShown(text => strip.meta(text)),
            tools: whileShown((...buttons) => strip.tools(...buttons)),
            status: whileShown(text => strip.status(text)),
        };
        const position = browser.position;
        return {
            signal,
            chrome,
            prefs: {
                get showZoom() {
                    return appearance.showZoom;
                },
                get airOutline() {
                    return appearance.airOutline;
                },
                onChange: callback => appearance.addEventListener('change', callback, { signal }),
            },
            neighbours: position && { ...position, go: whileShown(delta => browser.step(delta)) },
            bar: (...groups) => makeBar(view.host, signal, groups),
            post: whileShown(post),
        };
    }

    private list(message: OpenContainer): void {
        const { container } = message;
        if (!this.browser.arrived(container)) return;
        clearTimeout(this.busyTimer);
        const kind =
            container.kind === 'folder'
                ? kindOfEntry({ isDirectory: true, ext: '' })
                : kindOfExtension(extensionOf(container.name));
        this.details.show(null);
        this.strip.show(message.name, kind);
        this.strip.meta(formatCount(container.entries.length, 'item'));
        this.showTrail(container.token);
        this.stage.show('body deep', (host, signal) =>
            showListing(host, signal, this.browser, {
                status: text => this.strip.status(text),
                copyPath: entry => void this.copyPath(entryPath(container, entry.name)),
                selected: entry => this.details.show(factsOfEntry(entry, container.path)),
            }),
        );
        this.strip.tools();
        this.enter('listing', 'listing', container.path);
    }

    private fail(message: Failure): void {
        clearTimeout(this.busyTimer);
        this.browser.failed();
        this.details.show(null);
        const cancelled = message.message === CANCELLED;
        const name = message.name ?? this.strip.name;
        const kind = kindOfExtension(extensionOf(name));
        const inside = message.containerToken !== undefined;
        if (message.name !== undefined) this.strip.show(message.name, kind);
        else this.strip.tools();
        this.showTrail(message.containerToken, inside ? message.name : undefined);
        this.stage.show('view', host =>
            showError(host, {
                what: cancelled ? 'Cancelled' : whatFailed(kind, name),
                message: message.message,
                cancelled,
                back: inside ? () => this.browser.refresh() : undefined,
                status: text => this.strip.status(text),
            }),
        );
        this.enter('error', 'error', message.message);
    }

    /** The platform's own preview lies over the page, which keeps only its strips. */
    private standAside(message: NativePreview): void {
        clearTimeout(this.busyTimer);
        this.details.show(null);
        this.strip.show(message.name, kindOfExtension(extensionOf(message.name)));
        this.showTrail(message.containerToken, message.name);
        this.stage.clear();
        this.enter('native');
    }

    /** The path strip of a container: of its list, or of a document opened from it. */
    private showTrail(token: string | undefined, document?: string): void {
        const { browser } = this;
        if (!token) return this.trail.show(null);
        const inDocument = document !== undefined,
            { listing } = browser;
        const known = listing?.token === token ? browser.levels : [];
        const crumbs = known.map(({ label, above }) => ({
            label,
            open: above === null ? undefined : () => browser.climb(above),
        }));
        if (inDocument) crumbs.push({ label: document, open: undefined });
        const canRise = inDocument || listing?.parentId != null;
        const up = inDocument
            ? { title: 'Back to the list (Alt+Up)', go: () => browser.refresh() }
            : { title: 'Up one level (Alt+Up)', go: () => browser.up() };
        const copy = iconButton(
            'copy',
            'Copy path',
            () => listing && void this.copyPath(inDocument ? entryPath(listing, document) : listing.path),
        );
        const refresh = iconButton('refresh', 'Refresh (F5)', () => browser.refresh());
        const tools = inDocument ? [...this.steps(), ...(listing ? [copy] : [])] : [copy, refresh];
        this.trail.show({ crumbs, up: canRise ? up : undefined, tools });
    }

    /** To the documents before and after the shown one. */
    private steps(): HTMLElement[] {
        const { browser } = this,
            at = browser.position;
        if (!at) return [];
        const before = iconButton('chevron-left', 'Previous document (Alt+Left)', () => browser.step(-1));
        const after = iconButton('chevron-right', 'Next document (Alt+Right)', () => browser.step(1));
        before.disabled = at.index === 0;
        after.disabled = at.index === at.count - 1;
        return [
            before,
            el('span', { class: 'hint num' }, `${at.index + 1} of ${at.count}`),
            after,
            el('span', { class: 'sep' }),
        ];
    }

    private copyPath(path: string): Promise<void> {
        return this.copy(path, 'Path');
    }

    private async copy(text: string, what: string): Promise<void> {
        this.strip.status((await copyText(text)) ? `${what} copied` : `${what} could not be copied.`);
    }

    /** Links in documents lead nowhere; their address is shown instead. */
    private follow(event: MouseEvent): void {
        const link = event.target instanceof Element ? event.target.closest('a[href]') : null;
        const href = link?.getAttribute('href') ?? '';
        if (!link || href.startsWith('#')) return;
        event.preventDefault();
        this.strip.status(href);
    }

    private key(event: KeyboardEvent, act: (event: KeyboardEvent) => boolean): void {
        if (event.defaultPrevented || event.isComposing || !act(event)) return;
        event.preventDefault();
        event.stopPropagation();
    }

    private command(event: KeyboardEvent): boolean {
        const { key } = event,
            control = event.ctrlKey || event.metaKey;
        if (control && !event.altKey) {
            if (key.toLowerCase() === 'o' && !event.shiftKey) post({ type: 'open-dialog' });
            else if (key === ',') post({ type: 'mac-settings' });
            else if (key.toLowerCase() === 'i' && !event.shiftKey && this.details.available) this.details.toggle();
            else return false;
            return true;
        }
        if (control || isEditable(event.target)) return false;
        if (key === 'Escape' && this.details.open) {
            this.details.toggle();
            return true;
        }
        if (key === 'Escape' && (this.state === 'busy' || document.documentElement.dataset.full === 'on')) {
            post({ type: this.state === 'busy' ? 'cancel-preview' : 'max' });
            return true;
        }
        if (this.travel(event)) return true;
        if (key.toLowerCase() === 'f' && !event.altKey && this.state === 'shown') {
            post({ type: 'max' });
            return true;
        }
        return false;
    }

    /** Keys that move about in a folder or archive. */
    private travel({ key, altKey, ctrlKey, metaKey, shiftKey }: KeyboardEvent): boolean {
        const { browser } = this,
            listed = this.state === 'listing';
        if (browser.token === null || ctrlKey || metaKey || shiftKey) return false;
        if (altKey ? key === 'ArrowUp' : key === 'Backspace') {
            if (!listed) browser.refresh();
            else if (browser.listing?.parentId != null) browser.up();
        } else if (key === 'F5' && !altKey && listed) browser.refresh();
        else if (!listed && (key === 'ArrowLeft' || key === 'ArrowRight')) browser.step(key === 'ArrowLeft' ? -1 : 1);
        else return false;
        return true;
    }
}

/** Viewers speak to the user through plain errors; what the engine throws is not made for reading. */
function sentenceOf(error: unknown): string {
    return error instanceof Error && error.constructor === Error && error.message
        ? error.message
        : 'The file is damaged, or it is not what its name says.';
}

function whatFailed(kind: Kind, name: string): string {
    if (kind.family === 'archive') return 'This archive could not be opened';
    return extensionOf(name) ? 'This file could not be shown' : 'This item could not be opened';
}
