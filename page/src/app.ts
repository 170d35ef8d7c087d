import { CANCELLED } from './advice';
import { announce } from './announce';
import { Appearance } from './appearance';
import {
    type Busy,
    type Failure,
    type FromShell,
    type Listing,
    type OpenContainer,
    type OpenFile,
    post,
} from './bridge';
import { Browser } from './browser';
import { showBusy } from './busy';
import { TitleStrip } from './chrome';
import { clipboardAnswered } from './clipboard';
import { Copying, guardClipboard } from './copying';
import { Details, factsOfEntry, factsOfFile } from './details';
import { documentMenu } from './documentmenu';
import { iconButton, isEditable } from './dom';
import { showError, whatFailed } from './error';
import { formatCount } from './format';
import { type Frame, frameKeys } from './framekeys';
import { showHelp } from './help';
import { answer, type KeyGroup, type Keymap } from './keys';
import { extensionOf, kindOfEntry, kindOfExtension } from './kinds';
import { guardLinks } from './links';
import { showListing } from './listing';
import { type MenuGroups, openMenu } from './menu';
import { Opening, sentenceOf } from './opening';
import { crumbsOf, entryPath } from './path';
import { placeOf } from './place';
import type { ViewerName } from './registry';
import { NOTHING_YET, next, type Screen, type State } from './screen';
import { Shell } from './shell';
import { Stage } from './stage';
import { showStart } from './start';
import { TextSize } from './textsize';
import { Trail } from './trail';

const BUSY_AFTER = 250;
// Right after "init" the shell may ask for a file; the start view would only flash.
const START_AFTER_INIT = 60;
const START_WITHOUT_SHELL = 600;

/** The page: takes the shell's messages, presents the screen that follows, and offers the keys that work everywhere. */
export class App implements Frame {
    readonly appearance = new Appearance();
    readonly browser = new Browser(post);
    readonly shell = new Shell();
    private readonly stage = new Stage();
    private readonly trail = new Trail();
    private readonly strip: TitleStrip;
    private readonly textSize = new TextSize(text => this.strip.status(text));
    private readonly copying = new Copying(this, text => this.strip.status(text));
    readonly details = new Details(text => void this.copying.text(text, 'Details'));
    private readonly more = iconButton('more', 'More', () => this.openMenu());
    private readonly keymap: Keymap = frameKeys(this);
    private listKeys: KeyGroup | null = null;
    private state: State = NOTHING_YET;
    private opening: Opening | null = null;
    private busyTimer = 0;
    private startTimer = 0;

    constructor(body: HTMLElement) {
        this.strip = new TitleStrip(body, () => this.constantTools());
        this.more.setAttribute('aria-haspopup', 'menu');
        body.append(this.trail.element, this.stage.element, this.details.element);
        window.addEventListener('keydown', event => answer(this.keymap, event));
        // Editors have their own idea of Alt with the arrows, so these come first.
        const first = this.keymap.filter(({ keys }) => [keys].flat().some(written => written.startsWith('Alt+')));
        window.addEventListener('keydown', event => answer(first, event), { capture: true });
        window.addEventListener('copy', guardClipboard, { capture: true });
        window.addEventListener('mouseup', event => this.sideButtons(event));
        guardLinks(body, address => this.strip.status(address));
        body.addEventListener('contextmenu', event => this.contextMenu(event));
        window.addEventListener('drop', event => event.preventDefault());
    }

    begin(): void {
        this.startTimer = window.setTimeout(() => this.take({ type: 'waited' }), START_WITHOUT_SHELL);
    }

    receive(message: FromShell): void {
        switch (message.type) {
            case 'init':
                this.setFullScreen(message.maximized);
                clearTimeout(this.startTimer);
                this.startTimer = window.setTimeout(() => this.take({ type: 'waited' }), START_AFTER_INIT);
                return;
            case 'clipboard-result':
                return clipboardAnswered(message.copyRequestId, message.success);
            case 'state':
                return this.setFullScreen(message.maximized);
            case 'active':
                document.documentElement.classList.toggle('idle', !message.value);
                return;
            case 'neighbours':
                return this.meet(message.container, message.id, message.requestId);
            case 'file-changed':
                if (message.requestId === this.state.latest && this.screen.view === 'document') this.reload();
                return;
            case 'features':
            case 'recent':
            case 'file-digest':
                return this.shell.receive(message);
            default:
                return this.take(message);
        }
    }

    get screen(): Screen {
        return this.state.screen;
    }

    private take(message: Parameters<typeof next>[1]): void {
        const before = this.state;
        this.state = next(before, message);
        if (this.state !== before) this.present(this.state.screen);
    }

    private setFullScreen(on: boolean): void {
        document.documentElement.dataset.full = on ? 'on' : 'off';
    }

    private present(screen: Screen): void {
        if (screen.view !== 'busy') clearTimeout(this.busyTimer);
        if (screen.view !== 'document' && screen.view !== 'busy') this.opening = null;
        this.listKeys = null;
        switch (screen.view) {
            case 'blank':
                break;
            case 'start':
                this.strip.show('');
                this.stage.show('view', (host, signal) => showStart(host, signal, this.shell));
                break;
            case 'busy':
                return this.presentBusy(screen.busy);
            case 'document':
                return void this.presentDocument(screen.file);
            case 'list':
                if (!this.presentList(screen.list)) return;
                break;
            case 'error':
                this.presentError(screen.failure, screen.file);
                break;
            case 'native':
                this.details.show(null);
                this.strip.show(screen.preview.name, kindOfExtension(extensionOf(screen.preview.name)));
                this.showTrail(screen.preview.containerToken, screen.preview.name);
                // The platform's own preview lies over the page, which keeps only its strips.
                this.stage.clear();
        }
        announce(screen, this.strip.name);
    }

    private presentBusy(busy: Busy): void {
        this.browser.begun(busy.containerToken);
        announce(this.screen, this.strip.name);
        clearTimeout(this.busyTimer);
        const since = performance.now();
        this.busyTimer = window.setTimeout(() => {
            const kind = kindOfExtension(extensionOf(busy.name));
            // A document that has arrived and is loading has set up the strips already.
            if (!this.stage.isLoading) {
                this.details.show(null);
                this.strip.show(busy.name, kind);
                // A document of the list says where it will stand; a list that is read again keeps its path.
                const isDocument = this.browser.opened?.name === busy.name;
                if (!busy.containerToken || isDocument) this.showTrail(busy.containerToken, busy.name);
            }
            const cancel = () => post({ type: 'cancel-preview' });
            this.stage.cover('view', (host, signal) => showBusy(host, signal, busy.name, kind, since, cancel));
        }, BUSY_AFTER);
    }

    private async presentDocument(file: OpenFile, as?: ViewerName): Promise<void> {
        const view = this.stage.load(file.containerToken ? 'body deep' : 'body');
        const opening = new Opening(file, view, this.openingHost());
        this.opening = opening;
        this.browser.begun(file.containerToken);
        announce({ view: 'document', file }, file.name);
        this.details.show(factsOfFile(file, this.browser.opened, this.browser.listing?.path ?? ''));
        this.strip.show(file.name, kindOfExtension(file.originalExt || file.ext));
        this.showTrail(file.containerToken, file.name);
        try {
            await opening.show(as);
            if (!this.stage.reveal(view)) return;
            clearTimeout(this.busyTimer);
            announce(this.screen, this.strip.name, opening.viewer);
            if (!file.containerToken) this.shell.ask('neighbours');
        } catch (error) {
            if (!view.abort.signal.aborted) this.take({ type: 'failed', file, message: sentenceOf(error) });
        }
    }

    private openingHost(): ConstructorParameters<typeof Opening>[2] {
        const { strip, appearance, textSize, details, browser } = this;
        return {
            chrome: strip,
            prefs: appearance,
            textSize,
            get neighbours() {
                const { position } = browser;
                return position && { ...position, go: (delta: number) => browser.step(delta) };
            },
            details: rows => details.add(rows),
        };
    }

    /** Lists a level; false while it is only a step on the way up to another one. */
    private presentList(message: OpenContainer): boolean {
        const { container } = message;
        if (!this.browser.arrived(container)) return false;
        const isRoot = container.parentId === null;
        const name = (isRoot ? undefined : crumbsOf(container.path).at(-1)) ?? message.name;
        const isFolder = container.kind === 'folder' || !isRoot;
        const kind = isFolder
            ? kindOfEntry({ isDirectory: true, ext: '' })
            : kindOfExtension(extensionOf(container.name));
        this.details.show(null);
        this.strip.show(name, kind);
        this.strip.meta(formatCount(container.entries.length, 'item'));
        this.showTrail(container.token);
        this.stage.show('body deep', (host, signal) => {
            const table = showListing(host, signal, this.browser, {
                status: text => this.strip.status(text),
                copyPath: entry => void this.copying.text(entryPath(container, entry.name), 'Path'),
                details: () => this.details.toggle(),
                selected: entry => this.details.show(factsOfEntry(entry, container.path)),
            });
            this.listKeys = { title: 'List', table };
        });
        this.strip.tools();
        return true;
    }

    private presentError(failure: Failure, file?: OpenFile): void {
        this.browser.failed();
        this.details.show(null);
        const cancelled = failure.message === CANCELLED;
        const name = failure.name ?? this.strip.name;
        const kind = kindOfExtension(extensionOf(name));
        const inside = failure.containerToken !== undefined;
        if (failure.name !== undefined) this.strip.show(failure.name, kind);
        this.showTrail(failure.containerToken, inside ? failure.name : undefined);
        this.stage.show('view', host =>
            showError(host, {
                what: cancelled ? 'Cancelled' : whatFailed(kind, name),
                message: failure.message,
                cancelled,
                back: inside ? () => this.browser.refresh() : undefined,
                showAs: file && (() => void this.showAs('hex')),
                status: text => this.strip.status(text),
            }),
        );
        this.strip.tools();
    }

    private showTrail(token: string | undefined, document?: string): void {
        this.trail.show(placeOf(this.browser, token, document, path => void this.copying.text(path, 'Path')));
    }

    /** The shell has listed the folder of a file that was opened by itself; its neighbours can be stepped to. */
    private meet(container: Listing, id: string, requestId: number): void {
        const { screen } = this;
        if (requestId !== this.state.latest || screen.view !== 'document') return;
        this.browser.adopt(container, id);
        this.stage.deepen();
        this.showTrail(container.token, screen.file.name);
    }

    private constantTools(): HTMLElement[] {
        return [...(this.details.available ? [this.details.button] : []), ...(this.strip.name ? [this.more] : [])];
    }

    private openMenu(): void {
        openMenu(this.more, 'More', this.menu());
    }

    private menu(): MenuGroups {
        const { screen, opening, copying, shell } = this;
        const file = opening?.file ?? (screen.view === 'error' ? screen.file : undefined);
        const shown = screen.view === 'error' ? null : (opening?.viewer ?? null);
        return documentMenu(
            { file, shown, chosen: opening?.chosen ?? 'hex', out: shell.menu(), hasPath: copying.path() !== null },
            {
                showAs: way => this.showAs(way),
                copyPath: () => void copying.copyPath(),
                reload: () => this.reload(),
                help: () => this.help(),
            },
        );
    }

    private showAs(viewer: ViewerName): void {
        const { screen } = this;
        const file = screen.view === 'document' || screen.view === 'error' ? screen.file : undefined;
        if (!file) return;
        this.state = { ...this.state, screen: { view: 'document', file } };
        void this.presentDocument(file, viewer);
    }

    help(): void {
        const groups: KeyGroup[] = [...(this.opening?.keys ?? []), ...(this.listKeys ? [this.listKeys] : [])];
        showHelp([...groups, { title: 'Everywhere', table: this.keymap }]);
    }

    reload(): void {
        const { screen, browser } = this;
        if (screen.view === 'list') browser.refresh();
        else if (browser.opened) browser.open(browser.opened);
        else if (screen.view === 'document' && !this.shell.ask('reload')) void this.presentDocument(screen.file);
    }

    copySomething(): void {
        this.copying.something(this.opening?.copySource());
    }

    private sideButtons(event: MouseEvent): void {
        if (event.button !== 3 && event.button !== 4) return;
        event.preventDefault();
        if (event.button === 3) this.back();
        else this.shell.ask('go-forward');
    }

    back(): void {
        const { browser, screen } = this;
        if (screen.view !== 'list' && browser.token !== null) browser.refresh();
        else if (screen.view === 'list' && browser.listing?.parentId != null) browser.up();
        else this.shell.ask('go-back');
    }

    /** The engine's menu offers what cannot be done here; selected text keeps it, for copying. */
    private contextMenu(event: MouseEvent): void {
        if (event.defaultPrevented || (isEditable(event.target) && event.target instanceof HTMLInputElement)) return;
        event.preventDefault();
        const text = getSelection()?.toString() ?? '';
        const copySelected = { label: 'Copy', keys: 'Ctrl C', run: () => void this.copying.text(text, 'Selection') };
        const groups = [...(text ? [[copySelected]] : []), ...(this.strip.name ? this.menu() : [])];
        if (groups.length > 0) openMenu({ x: event.clientX, y: event.clientY }, 'Document', groups);
    }
}
