import { el, icon, iconButton } from '../../dom';
import type { Keymap } from '../../keys';
import { answer } from '../../keys';
import { setPressed } from './pressed';
import './findbar.css';

export interface FindOptions {
    matchCase: boolean;
    wholeWord: boolean;
}

export interface FindHandlers {
    query(text: string, options: FindOptions): void;
    step(direction: 1 | -1): void;
    closed(): void;
    /** Before the bar comes in sight. */
    opened?(): void;
    /** Switches that this viewer cannot follow are left out. */
    without?: 'options';
}

/** The floating find capsule that all viewers with text share, with its button and its keys. */
export class FindBar {
    readonly element: HTMLElement;
    readonly button = iconButton('search', 'Find (Ctrl+F)', () => (this.isOpen ? this.close() : this.open()));
    readonly options: FindOptions = { matchCase: false, wholeWord: false };
    private readonly input = el('input', {
        'aria-label': 'Find',
        placeholder: 'Find',
        spellcheck: 'false',
        autocomplete: 'off',
    });
    private readonly count = el('span', { class: 'hint num', role: 'status' });
    private readonly ownKeys: Keymap = [
        { keys: 'Enter', inFields: true, run: event => event.target === this.input && this.handlers.step(1) },
        { keys: 'Shift+Enter', inFields: true, run: event => event.target === this.input && this.handlers.step(-1) },
        { keys: ['F3', 'Ctrl+G'], inFields: true, run: () => this.handlers.step(1) },
        { keys: ['Shift+F3', 'Ctrl+Shift+G'], inFields: true, run: () => this.handlers.step(-1) },
        { keys: 'Escape', inFields: true, run: () => this.close() },
        { keys: 'Ctrl+F', run: () => this.open() },
    ];
    /** For the view's keymap. */
    readonly keys: Keymap = [
        { keys: 'Ctrl+F', label: 'Find', run: () => this.open(this.selection()) },
        { keys: 'F3', label: 'Find next', run: () => (this.text ? this.handlers.step(1) : this.open()) },
        { keys: 'Shift+F3', label: 'Find previous', run: () => (this.text ? this.handlers.step(-1) : this.open()) },
        { keys: 'Escape', run: () => (this.isOpen ? this.close() : false) },
    ];

    constructor(
        private readonly handlers: FindHandlers,
        private readonly selection: () => string | undefined = () => undefined,
    ) {
        const wanted =
            handlers.without === 'options'
                ? []
                : [this.toggle('matchCase', 'Aa', 'Match case'), this.toggle('wholeWord', 'W', 'Whole word')];
        this.element = el(
            'div',
            { class: 'capsule find', role: 'search' },
            icon('search', 's'),
            this.input,
            this.count,
            ...wanted,
            iconButton('chevron-up', 'Previous (Shift+Enter)', () => handlers.step(-1), 's'),
            iconButton('chevron-down', 'Next (Enter)', () => handlers.step(1), 's'),
            iconButton('close', 'Close (Esc)', () => this.close(), 's'),
        );
        this.element.hidden = true;
        this.input.addEventListener('input', () => handlers.query(this.input.value, this.options));
        this.element.addEventListener('keydown', event => {
            // What is typed here is nobody else's.
            if (!answer(this.ownKeys, event)) event.stopPropagation();
        });
    }

    private toggle(option: keyof FindOptions, label: string, title: string): HTMLElement {
        const button = el('button', { class: 'btn only option', type: 'button', title, 'aria-label': title }, label);
        button.addEventListener('click', () => {
            this.options[option] = !this.options[option];
            setPressed(button, this.options[option]);
            this.input.focus();
            if (this.text) this.handlers.query(this.text, this.options);
        });
        setPressed(button, false);
        return button;
    }

    get isOpen(): boolean {
        return !this.element.hidden;
    }

    get text(): string {
        return this.input.value;
    }

    open(text?: string): void {
        this.handlers.opened?.();
        this.element.hidden = false;
        setPressed(this.button, true);
        if (text) this.input.value = text;
        this.input.focus();
        this.input.select();
        if (this.input.value) this.handlers.query(this.input.value, this.options);
    }

    close(): void {
        if (this.element.hidden) return;
        this.element.hidden = true;
        setPressed(this.button, false);
        this.handlers.closed();
    }

    report(text: string): void {
        this.count.textContent = text;
    }
}
