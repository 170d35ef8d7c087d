const MARGIN = 6;

/** Which rows to keep in the document for a scroll position: `first` included, `last` excluded. */
export function visibleRows(
    scrollTop: number,
    height: number,
    rowHeight: number,
    count: number,
    spare: number,
    margin = MARGIN,
) {
    const first = Math.floor((scrollTop - margin) / rowHeight) - spare;
    const last = Math.ceil((scrollTop - margin + height) / rowHeight) + spare;
    return { first: Math.max(0, Math.min(first, count)), last: Math.max(0, Math.min(last, count)) };
}

/** The scroll position nearest to `scrollTop` that shows the whole row and the margin at its sides. */
export function scrollToShow(
    index: number,
    scrollTop: number,
    height: number,
    rowHeight: number,
    margin = MARGIN,
): number {
    const top = index * rowHeight,
        bottom = top + rowHeight + 2 * margin;
    if (top < scrollTop) return top;
    return bottom > scrollTop + height ? bottom - height : scrollTop;
}

/** Rows that a Page key moves: a screenful less one, so that the eye keeps a row to hold on to. */
export const pageStep = (height: number, rowHeight: number): number => Math.max(1, Math.floor(height / rowHeight) - 1);

export interface Rows {
    count(): number;
    readonly rowHeight: number;
    /** Air above the first row and below the last. */
    readonly margin?: number;
    render(index: number): HTMLElement;
}

const SPARE = 8;

/** A long list of equal rows of which only those in sight stand in the document. */
export class VirtualRows {
    private readonly mounted = new Map<number, HTMLElement>();

    /** `scroller` scrolls, `sizer` inside it takes the height of all rows; both live as long as `signal`. */
    constructor(
        private readonly scroller: HTMLElement,
        private readonly sizer: HTMLElement,
        private readonly rows: Rows,
        signal: AbortSignal,
    ) {
        scroller.addEventListener('scroll', () => this.update(), { signal, passive: true });
        const resized = new ResizeObserver(() => this.update());
        resized.observe(scroller);
        signal.addEventListener('abort', () => resized.disconnect());
    }

    private get margin(): number {
        return this.rows.margin ?? MARGIN;
    }

    get pageStep(): number {
        return pageStep(this.scroller.clientHeight, this.rows.rowHeight);
    }

    /** The row in the document, if it is near the visible part. */
    at(index: number): HTMLElement | undefined {
        return this.mounted.get(index);
    }

    /** Draws everything anew: another order, other contents. */
    redraw(): void {
        this.mounted.clear();
        this.sizer.replaceChildren();
        this.sizer.style.height = `${this.rows.count() * this.rows.rowHeight + 2 * this.margin}px`;
        this.update();
    }

    /** Takes in rows that have come at the end; those in sight stay. */
    grow(): void {
        this.sizer.style.height = `${this.rows.count() * this.rows.rowHeight + 2 * this.margin}px`;
        this.update();
    }

    reveal(index: number): void {
        const { scrollTop, clientHeight } = this.scroller;
        this.scroller.scrollTop = scrollToShow(index, scrollTop, clientHeight, this.rows.rowHeight, this.margin);
        this.update();
    }

    private update(): void {
        const { first, last } = visibleRows(
            this.scroller.scrollTop,
            this.scroller.clientHeight,
            this.rows.rowHeight,
            this.rows.count(),
            SPARE,
            this.margin,
        );
        for (const [index, row] of this.mounted) {
            if (index >= first && index < last) continue;
            row.remove();
            this.mounted.delete(index);
        }
        for (let index = first; index < last; index++) {
            if (this.mounted.has(index)) continue;
            const row = this.rows.render(index);
            row.style.top = `${this.margin + index * this.rows.rowHeight}px`;
            this.mounted.set(index, row);
            this.sizer.append(row);
        }
    }
}
