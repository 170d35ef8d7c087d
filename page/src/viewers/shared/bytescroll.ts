import { el } from '../../dom';
import { followPointer } from './drag';
import './bytescroll.css';

const SMALLEST_THUMB = 32;

export interface ScrollPosition {
    /** Parts of the whole, 0 to 1. */
    at: number;
    visible: number;
}

/** Where the thumb lies for a position; `at` is 1 when the last page is showing. */
export function thumbOf(position: ScrollPosition, track: number): { top: number; height: number } {
    const height = Math.min(track, Math.max(SMALLEST_THUMB, position.visible * track));
    return { top: Math.max(0, Math.min(1, position.at)) * (track - height), height };
}

export function positionOf(thumbTop: number, thumbHeight: number, track: number): number {
    return track <= thumbHeight ? 0 : Math.max(0, Math.min(1, thumbTop / (track - thumbHeight)));
}

/** A scroll bar for content whose height no element could have: it knows parts of the whole, not pixels. */
export class ByteScrollBar {
    readonly element: HTMLElement;
    private readonly thumb = el('div', { class: 'thumb' });
    private position: ScrollPosition = { at: 0, visible: 1 };

    constructor(onMove: (at: number) => void, onPage: (direction: 1 | -1) => void) {
        this.element = el(
            'div',
            { class: 'bytescroll', role: 'scrollbar', 'aria-orientation': 'vertical' },
            this.thumb,
        );
        this.element.addEventListener('pointerdown', event => {
            event.preventDefault();
            const track = this.element.clientHeight;
            const { top, height } = thumbOf(this.position, track);
            const y = event.clientY - this.element.getBoundingClientRect().top;
            if (event.target !== this.thumb) return onPage(y < top ? -1 : 1);
            const grip = y - top;
            followPointer(this.element, event, e => {
                const over = e.clientY - this.element.getBoundingClientRect().top;
                const at = positionOf(over - grip, height, track);
                this.set({ ...this.position, at });
                onMove(at);
            });
        });
    }

    set(position: ScrollPosition): void {
        this.position = position;
        this.element.hidden = position.visible >= 1;
        const { top, height } = thumbOf(position, this.element.clientHeight);
        this.thumb.style.height = `${height}px`;
        this.thumb.style.transform = `translateY(${top}px)`;
        this.element.setAttribute('aria-valuenow', String(Math.round(position.at * 100)));
    }
}

/** Wheel movement as whole rows; what is left over counts for the next event. */
export function wheelRows(rowHeight: number): (event: WheelEvent) => number {
    let rest = 0;
    return event => {
        const unit =
            event.deltaMode === WheelEvent.DOM_DELTA_LINE
                ? rowHeight
                : event.deltaMode === WheelEvent.DOM_DELTA_PAGE
                  ? rowHeight * 20
                  : 1;
        rest += event.deltaY * unit;
        const rows = Math.trunc(rest / rowHeight);
        rest -= rows * rowHeight;
        return rows;
    };
}
