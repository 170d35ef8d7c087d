import { isEditable } from './dom';

/** One row of a keymap. The same tables answer the keys and make the help. */
export interface KeyBinding {
    /** Keys that all mean this: "Ctrl+F", "Shift+F3", "Alt+ArrowUp", "Space", "+". Ctrl is Command where the desktop has it. */
    keys: string | readonly string[];
    /** What it does, for the help; rows without it are not listed. */
    label?: string;
    /** Answers the key; false hands it on. */
    run(event: KeyboardEvent): unknown;
    /** Whether the key counts while a text field has the focus; those with Ctrl do anyway. */
    inFields?: boolean;
}

export type Keymap = readonly KeyBinding[];

/** A table under a heading of the help. */
export interface KeyGroup {
    title: string;
    table: Keymap;
}

export const keysOf = ({ keys }: KeyBinding): readonly string[] => (typeof keys === 'string' ? [keys] : keys);

type Pressed = Pick<KeyboardEvent, 'key' | 'ctrlKey' | 'metaKey' | 'altKey' | 'shiftKey'>;

/** Whether a key is pressed as written. Shift is part of the name of a key only where it does not make another character. */
export function isPressed(written: string, event: Pressed): boolean {
    const parts =
        written === '+'
            ? ['+']
            : written.endsWith('++')
              ? [...written.slice(0, -2).split('+'), '+']
              : written.split('+');
    const name = parts.at(-1) ?? '';
    const wants = (modifier: string) => parts.length > 1 && parts.slice(0, -1).includes(modifier);
    const key = event.key === ' ' ? 'Space' : event.key;
    const isLetter = /^\p{L}$/u.test(key);
    const same = isLetter ? key.toLowerCase() === name.toLowerCase() : key === name;
    const shiftCounts = key.length > 1 || isLetter;
    return (
        same &&
        wants('Ctrl') === (event.ctrlKey || event.metaKey) &&
        wants('Alt') === event.altKey &&
        (!shiftCounts || wants('Shift') === event.shiftKey)
    );
}

/** Runs the first row that takes the key; true when one did. */
export function answer(table: Keymap, event: KeyboardEvent): boolean {
    if (event.defaultPrevented || event.isComposing) return false;
    const typing = isEditable(event.target);
    for (const row of table) {
        const written = keysOf(row).find(keys => isPressed(keys, event));
        if (written === undefined || (typing && !row.inFields && !written.startsWith('Ctrl+'))) continue;
        if (row.run(event) === false) continue;
        event.preventDefault();
        event.stopPropagation();
        return true;
    }
    return false;
}

/** Lets a table answer the keys that reach `target`. */
export function listen(table: Keymap, target: EventTarget, options: AddEventListenerOptions): void {
    target.addEventListener('keydown', event => answer(table, event as KeyboardEvent), options);
}

const CAPS: Record<string, string> = {
    ArrowLeft: '←',
    ArrowRight: '→',
    ArrowUp: '↑',
    ArrowDown: '↓',
    Enter: '↵',
    Escape: 'Esc',
    PageUp: 'Page Up',
    PageDown: 'Page Down',
    Backspace: '⌫',
    Delete: 'Del',
    '-': '−',
};

/** The caps of one key combination as the help draws them. */
export function capsOf(written: string): string[] {
    if (written === '+') return ['+'];
    const parts = written.endsWith('++') ? [...written.slice(0, -2).split('+'), '+'] : written.split('+');
    return parts.map(part => CAPS[part] ?? (part.length === 1 ? part.toUpperCase() : part));
}
