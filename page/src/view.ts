import type { ToShell } from './bridge';
import type { Chrome } from './chrome';
import type { Doc } from './doc';
import type { Keymap } from './keys';

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

/** What Ctrl+C copies when no text is selected: text, or null to leave it to the page, which copies the path. */
export type CopySource = () => { text: string; what: string } | null;

/**
 * What a viewer gets besides its document. Keys that no table of the viewer takes go on to the page: Left and Right step
 * through the container's documents, Backspace and Alt+Up lead back to its list, "f" toggles full screen. After show() the
 * page focuses the host's first [data-focus] element, unless the viewer has moved the focus into the host itself.
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
    /** Answers these keys while the view stands, wherever the focus is, and lists them in the help under `title`. */
    keys(table: Keymap, title?: string): void;
    /** What the viewer has found out, for the details panel; names that were told before take the new value. */
    details(rows: readonly (readonly [name: string, value: string])[]): void;
    /** Says what Ctrl+C copies when no text is selected. */
    copies(source: CopySource): void;
    /** Shows a sentence above the document: what is missing, or why it is shown this way. */
    notice(text: string): void;
    /** Lets Ctrl+plus, Ctrl+minus, Ctrl+0, Ctrl+wheel and pinch change the size of an element with text. */
    zoomable(element: HTMLElement): void;
    /** Catches links in a document of its own (a frame) as the page catches its own. */
    guard(document: Document): void;
    /** The same for a view within the view, which ends by itself and may put tools of its own beside it. */
    nested(signal: AbortSignal, chrome?: Chrome): ViewContext;
    post(message: ToShell): void;
}

/**
 * A viewer. Until show() resolves the view before stays in sight. A plain Error from show() lets the next best viewer
 * follow with its sentence above; ReadFailure and Refusal end in an error card.
 */
export interface Viewer {
    show(host: HTMLElement, doc: Doc, view: ViewContext): Promise<void>;
}
