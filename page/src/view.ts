import type { ToShell } from './bridge';
import type { Chrome } from './chrome';
import type { Doc } from './doc';

/** The preferences that concern viewers. */
export interface ViewPrefs {
    /** Show zoom in and out buttons beside the percentage (CSS: [data-zoom=on] on the root). */
    readonly showZoom: boolean;
    /** Outlines on buttons (CSS: [data-air=on] on the root). */
    readonly airOutline: boolean;
    /** Called after a change, until the view is replaced. */
    onChange(callback: () => void): void;
}

/** Where a document stands among the documents of its folder or archive. */
export interface Neighbours {
    /** Zero-based place of the document. */
    readonly index: number;
    readonly count: number;
    /** Opens the document `delta` places on; nothing happens past the ends. */
    go(delta: number): void;
}

/**
 * What a viewer gets besides its document. Keys that the viewer does not preventDefault() go on to the page: Left and
 * Right step through the container's documents, Backspace and Alt+Up lead back to its list, "f" toggles full screen.
 * After show() the page focuses the host's first [data-focus] element, unless the viewer has moved the focus into the
 * host itself.
 */
export interface ViewContext {
    /** Aborted when the view is replaced; takes the place of every destroy method. */
    readonly signal: AbortSignal;
    readonly chrome: Chrome;
    readonly prefs: ViewPrefs;
    /** Null unless the document was opened inside a folder or archive with more than one document. */
    readonly neighbours: Neighbours | null;
    /** A floating bar at the bottom centre of the host, with a line between groups; hides by itself. */
    bar(...groups: HTMLElement[][]): HTMLElement;
    post(message: ToShell): void;
}

export interface Viewer {
    show(host: HTMLElement, doc: Doc, view: ViewContext): Promise<void>;
}
