import { post } from './bridge';
import type { Browser } from './browser';
import type { Details } from './details';
import type { Keymap } from './keys';
import type { Screen } from './screen';
import type { Shell } from './shell';

/** What the keys that work everywhere act upon. */
export interface Frame {
    readonly browser: Browser;
    readonly details: Details;
    readonly shell: Shell;
    readonly screen: Screen;
    back(): void;
    copySomething(): void;
    help(): void;
    reload(): void;
}

const isFullScreen = () => document.documentElement.dataset.full === 'on';

/** The keys of the frame around all views. */
export function frameKeys(frame: Frame): Keymap {
    const listed = () => frame.screen.view === 'list';
    const inContainer = () => frame.browser.token !== null;
    const step = (delta: number) => !listed() && inContainer() && frame.browser.step(delta);
    const up = () => inContainer() && frame.back();
    return [
        { keys: 'Ctrl+O', label: 'Open', run: () => post({ type: 'open-dialog' }) },
        { keys: 'Ctrl+,', label: 'Settings', run: () => post({ type: 'mac-settings' }) },
        { keys: 'Ctrl+I', label: 'Details', run: () => frame.details.available && frame.details.toggle() },
        {
            keys: 'Ctrl+C',
            label: 'Copy what is selected, or the path',
            run: () => !selected() && frame.copySomething(),
        },
        { keys: 'Ctrl+P', label: 'Print', run: () => frame.screen.view === 'document' && frame.shell.ask('print') },
        { keys: ['ArrowLeft', 'Alt+ArrowLeft'], label: 'Previous document, or back', run: previous },
        { keys: ['ArrowRight', 'Alt+ArrowRight'], label: 'Next document', run: following },
        { keys: ['Alt+ArrowUp', 'Backspace'], label: 'Back to the list, or up', run: up },
        { keys: 'Space', run: () => frame.browser.peeking && !listed() && frame.back() },
        { keys: 'F5', label: 'Reload', run: () => frame.reload() },
        { keys: 'F', label: 'Full screen', run: () => frame.screen.view === 'document' && post({ type: 'max' }) },
        { keys: 'Escape', label: 'Close what is on top', run: closeTopmost },
        { keys: ['F1', '?'], label: 'Keys', run: () => frame.help() },
    ];

    function selected(): boolean {
        return (getSelection()?.toString() ?? '') !== '';
    }
    function previous(event: KeyboardEvent) {
        return inContainer() ? step(-1) : event.altKey && frame.shell.ask('go-back');
    }
    function following(event: KeyboardEvent) {
        return inContainer() ? step(1) : event.altKey && frame.shell.ask('go-forward');
    }
    function closeTopmost() {
        if (frame.details.open) frame.details.toggle();
        else if (frame.screen.view === 'busy') post({ type: 'cancel-preview' });
        else if (isFullScreen()) post({ type: 'max' });
        else return false;
    }
}
