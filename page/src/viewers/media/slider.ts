import { el } from '../../dom';
import { followPointer } from '../shared/drag';

export interface SliderOptions {
    label: string;
    cls?: string;
    /** Told while dragging and on keys; parts of the whole. */
    change(part: number): void;
    key?(event: KeyboardEvent): boolean;
    text(part: number): string;
}

/** A track with a knob. Holds a part of a whole, 0 to 1. */
export class Slider {
    readonly element: HTMLElement;
    private readonly done = el('span', { class: 'p' });
    private readonly loaded = el('span', { class: 'l' });
    private readonly knob = el('span', { class: 'k' });
    private dragging = false;

    constructor(private readonly options: SliderOptions) {
        this.element = el(
            'span',
            {
                class: `seek ${options.cls ?? ''}`.trim(),
                role: 'slider',
                tabindex: '0',
                'aria-label': options.label,
                'aria-valuemin': '0',
                'aria-valuemax': '100',
            },
            el('span', { class: 't' }),
            this.loaded,
            this.done,
            this.knob,
        );
        this.element.addEventListener('pointerdown', event => this.drag(event));
        this.element.addEventListener('keydown', event => {
            if (!options.key?.(event)) return;
            event.preventDefault();
            event.stopPropagation();
        });
    }

    set(part: number, loaded = 0): void {
        if (!this.dragging) this.draw(part);
        this.loaded.style.width = `${loaded * 100}%`;
    }

    private draw(part: number): void {
        const percent = Math.max(0, Math.min(1, part)) * 100;
        this.done.style.width = `${percent}%`;
        this.knob.style.left = `${percent}%`;
        this.element.style.setProperty('--part', `${percent}%`);
        this.element.setAttribute('aria-valuenow', String(Math.round(percent)));
        this.element.setAttribute('aria-valuetext', this.options.text(part));
    }

    private drag(event: PointerEvent): void {
        if (event.button !== 0) return;
        this.dragging = true;
        const at = (e: PointerEvent) => {
            const box = this.element.getBoundingClientRect();
            const part = box.width > 0 ? Math.max(0, Math.min(1, (e.clientX - box.left) / box.width)) : 0;
            this.draw(part);
            this.options.change(part);
        };
        followPointer(this.element, event, at, () => {
            this.dragging = false;
        });
        at(event);
    }
}
