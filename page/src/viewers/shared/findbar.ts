import { el, icon, iconButton } from '../../dom';
import './findbar.css';

export interface FindHandlers {
    query(text: string): void;
    step(direction: 1 | -1): void;
    closed(): void;
}

/** The floating find capsule that text, pages and byte ranges share. */
export class FindBar {
    readonly element: HTMLElement;
    private readonly input: HTMLInputElement;
    private readonly count: HTMLElement;

    constructor(private readonly handlers: FindHandlers) {
        this.input = el('input', {
            'aria-label': 'Find',
            placeholder: 'Find',
            spellcheck: 'false',
            autocomplete: 'off',
        });
        this.count = el('span', { class: 'hint num', role: 'status' });
        this.element = el(
            'div',
            { class: 'capsule find', role: 'search' },
            icon('search', 's'),
            this.input,
            this.count,
            iconButton('chevron-up', 'Previous (Shift+Enter)', () => handlers.step(-1), 's'),
            iconButton('chevron-down', 'Next (Enter)', () => handlers.step(1), 's'),
            iconButton('close', 'Close (Esc)', () => this.close(), 's'),
        );
        this.element.hidden = true;
        this.input.addEventListener('input', () => handlers.query(this.input.value));
        this.element.addEventListener('keydown', event => {
            if (event.key === 'Enter' && event.target === this.input) handlers.step(event.shiftKey ? -1 : 1);
            else if (event.key === 'F3') handlers.step(event.shiftKey ? -1 : 1);
            else if (event.key === 'Escape') this.close();
            else if (!(event.ctrlKey && event.key === 'f')) return event.stopPropagation();
            event.preventDefault();
            event.stopPropagation();
            if (event.ctrlKey) this.open();
        });
    }

    get isOpen(): boolean {
        return !this.element.hidden;
    }

    get text(): string {
        return this.input.value;
    }

    open(text?: string): void {
        this.element.hidden = false;
        if (text) this.input.value = text;
        this.input.focus();
        this.input.select();
        if (this.input.value) this.handlers.query(this.input.value);
    }

    close(): void {
        if (this.element.hidden) return;
        this.element.hidden = true;
        this.handlers.closed();
    }

    report(text: string): void {
        this.count.textContent = text;
    }
}
