// @vitest-environment happy-dom
import { describe, expect, test } from 'vitest';
import { answer, capsOf, isPressed, type KeyBinding } from './keys';

type Modifiers = { ctrlKey?: boolean; metaKey?: boolean; altKey?: boolean; shiftKey?: boolean };
const pressed = (key: string, modifiers: Modifiers = {}) =>
    new KeyboardEvent('keydown', { key, ...modifiers, cancelable: true, bubbles: true });

test.each<[string, string, Modifiers, boolean]>([
    ['Ctrl+F', 'f', { ctrlKey: true }, true],
    ['Ctrl+F', 'F', { ctrlKey: true }, true],
    ['Ctrl+F', 'f', { metaKey: true }, true],
    ['Ctrl+F', 'F', { ctrlKey: true, shiftKey: true }, false],
    ['Ctrl+F', 'f', {}, false],
    ['F', 'f', { altKey: true }, false],
    ['F', 'F', {}, true],
    ['+', '+', { shiftKey: true }, true],
    ['+', '+', {}, true],
    ['Ctrl++', '+', { ctrlKey: true, shiftKey: true }, true],
    ['?', '?', { shiftKey: true }, true],
    ['Shift+F3', 'F3', { shiftKey: true }, true],
    ['F3', 'F3', { shiftKey: true }, false],
    ['Alt+ArrowUp', 'ArrowUp', { altKey: true }, true],
    ['Space', ' ', {}, true],
    ['Shift+Space', ' ', { shiftKey: true }, true],
])('%s against %s %o', (written, key, modifiers, expected) =>
    expect(isPressed(written, pressed(key, modifiers))).toBe(expected),
);

describe('a table', () => {
    const ran: string[] = [];
    const row = (keys: string | string[], name: string, more: Partial<KeyBinding> = {}): KeyBinding => ({
        keys,
        run: () => void ran.push(name),
        ...more,
    });
    const table = [
        row('x', 'declined', { run: () => false }),
        row(['x', 'y'], 'taken'),
        row('Ctrl+F', 'find'),
        row('Escape', 'close', { inFields: true }),
    ];
    const press = (target: EventTarget, key: string, modifiers: Modifiers = {}) => {
        ran.length = 0;
        const event = pressed(key, modifiers);
        target.addEventListener('keydown', e => answer(table, e as KeyboardEvent), { once: true });
        target.dispatchEvent(event);
        return [ran.join(), event.defaultPrevented];
    };

    test.each<[string, Modifiers, [string, boolean], [string, boolean]]>([
        ['x', {}, ['taken', true], ['', false]],
        ['y', {}, ['taken', true], ['', false]],
        ['z', {}, ['', false], ['', false]],
        ['f', { ctrlKey: true }, ['find', true], ['find', true]],
        ['Escape', {}, ['close', true], ['close', true]],
    ])('%s %o in the content and in a field', (key, modifiers, inContent, inField) => {
        expect(press(document.createElement('div'), key, modifiers)).toEqual(inContent);
        expect(press(document.createElement('input'), key, modifiers)).toEqual(inField);
    });

    test('caps', () => {
        expect(['Ctrl+Shift+F3', 'Alt+ArrowUp', 'Ctrl++', '+', 'f'].map(capsOf)).toEqual([
            ['Ctrl', 'Shift', 'F3'],
            ['Alt', '↑'],
            ['Ctrl', '+'],
            ['+'],
            ['F'],
        ]);
    });
});
