import { el } from './dom';

/** One view in the document and the signal that ends it. */
export interface Mounted {
    host: HTMLElement;
    abort: AbortController;
}

/**
 * The place where views follow each other. A document that is still loading lies unseen over the view before it, which
 * stays in sight until the document is there: stepping through pictures does not blink.
 */
export class Stage {
    readonly element = el('main', {});
    private shown: Mounted | null = null;
    private loading: Mounted | null = null;

    get isLoading(): boolean {
        return this.loading !== null;
    }

    /** Puts up a view that is complete at once. */
    show(cls: string, fill: (host: HTMLElement, signal: AbortSignal) => void): void {
        this.drop(this.loading);
        this.drop(this.shown);
        this.loading = null;
        this.shown = this.mount(cls);
        fill(this.shown.host, this.shown.abort.signal);
        focusContent(this.shown.host);
    }

    /** Makes room for a view that takes time. What is in sight stays but is told that its time is over. */
    load(cls: string): Mounted {
        this.drop(this.loading);
        this.shown?.abort.abort();
        this.loading = this.mount(`${cls} loading`);
        return this.loading;
    }

    /** Brings a loaded view into sight, unless another has taken its place meanwhile. */
    reveal(view: Mounted): boolean {
        if (view !== this.loading) return false;
        this.drop(this.shown);
        this.shown = view;
        this.loading = null;
        view.host.classList.remove('loading');
        focusContent(view.host);
        return true;
    }

    /** Replaces what is in sight and leaves alone what is loading. */
    cover(cls: string, fill: (host: HTMLElement, signal: AbortSignal) => void): void {
        this.drop(this.shown);
        this.shown = this.mount(cls);
        fill(this.shown.host, this.shown.abort.signal);
    }

    /** Makes room for the path strip above a view that stands already. */
    deepen(): void {
        this.shown?.host.classList.add('deep');
    }

    clear(): void {
        this.drop(this.loading);
        this.drop(this.shown);
        this.loading = this.shown = null;
    }

    private mount(cls: string): Mounted {
        const view = { host: el('section', { class: cls }), abort: new AbortController() };
        this.element.append(view.host);
        return view;
    }

    private drop(view: Mounted | null): void {
        view?.abort.abort();
        view?.host.remove();
    }
}

/** A new view takes the keys: its content, not its first button. */
function focusContent(host: HTMLElement): void {
    if (host.contains(document.activeElement)) return;
    const target = host.querySelector<HTMLElement>('[data-focus]') ?? host;
    if (target === host) host.tabIndex = -1;
    target.focus({ preventScroll: true });
}
