import { post } from './bridge';
import { el, icon, toolbar } from './dom';
import { type Kind, kindOfExtension } from './kinds';

/** The title strip as a view sees it. */
export interface Chrome {
    /** The line beside the name ("4032 × 3024 · 3.9 MB"). */
    meta(text: string): void;
    /** Fills the tool capsule; at most four buttons, none removes it. */
    tools(...buttons: HTMLElement[]): void;
    /** A short message at the lower edge, also read out; it goes by itself. */
    status(text: string): void;
}

const STATUS_SHOWN = 4000;

/** The title strip: what is shown, its tools, and the place where the window is dragged. */
export class TitleStrip implements Chrome {
    private readonly symbol = el('span', { class: 'symbol' });
    private readonly nameText = el('b');
    private readonly metaText = el('span', { class: 'meta' });
    private readonly nameCapsule = el(
        'div',
        { class: 'capsule name', hidden: true },
        this.symbol,
        this.nameText,
        this.metaText,
    );
    private readonly toolCapsule = toolbar(el('div', { class: 'capsule', hidden: true }), 'Tools');
    private readonly statusText = el('div', { class: 'capsule status', role: 'status', 'aria-live': 'polite' });
    private statusTimer = 0;
    /** What is shown; empty for nothing. */
    name = '';
    readonly element = el(
        'header',
        { class: 'strip', onpointerdown: startDrag },
        this.nameCapsule,
        el('span', { class: 'grow' }),
        this.toolCapsule,
    );

    /** `always` follows the tools of the view. */
    constructor(
        body: HTMLElement,
        private readonly always: () => HTMLElement[],
    ) {
        // Window controls are native; over a photo they would vanish on a matching spot without a plate of ours.
        body.append(el('div', { class: 'capsule plate', 'aria-hidden': 'true' }), this.element, this.statusText);
    }

    /** Names what is shown and takes away what the view before left; no name hides the capsule. */
    show(name: string, kind: Kind = kindOfExtension('')): void {
        this.name = name;
        this.nameCapsule.hidden = !name;
        this.nameText.textContent = name;
        this.nameCapsule.title = name;
        this.symbol.replaceChildren(icon(kind.icon, kind.family));
        this.meta('');
        this.tools();
    }

    meta(text: string): void {
        this.metaText.textContent = text;
    }

    tools(...own: HTMLElement[]): void {
        const buttons = [...own, ...this.always()];
        this.toolCapsule.replaceChildren(...buttons);
        this.toolCapsule.hidden = buttons.length === 0;
        buttons.forEach((button, i) => {
            button.tabIndex = i === 0 ? 0 : -1;
        });
    }

    status(text: string): void {
        clearTimeout(this.statusTimer);
        this.statusText.textContent = text;
        this.statusText.classList.toggle('on', text !== '');
        if (text) this.statusTimer = window.setTimeout(() => this.status(''), STATUS_SHOWN);
    }
}

function startDrag(event: PointerEvent): void {
    if (event.button !== 0 || !event.isPrimary) return;
    if (event.target instanceof Element && event.target.closest('button, a, input')) return;
    post({ type: 'drag' });
}
