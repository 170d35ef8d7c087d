import type { Browser } from './browser';
import { copyText } from './clipboard';
import { isEditable } from './dom';
import { entryPath } from './path';
import type { Screen } from './screen';
import type { Shell } from './shell';

interface Shown {
    readonly browser: Browser;
    readonly shell: Shell;
    readonly screen: Screen;
}

/** What goes to the clipboard from what is shown. It is never emptied. */
export class Copying {
    constructor(
        private readonly shown: Shown,
        private readonly status: (text: string) => void,
    ) {}

    /** The full path of what is shown, or its name where the page knows no more. */
    path(): string | null {
        const { browser, screen } = this.shown,
            { listing, opened } = browser;
        if (listing && screen.view === 'list') return listing.path;
        if (listing && opened) return entryPath(listing, opened.name);
        return screen.view === 'document' ? screen.file.name : null;
    }

    /** What Ctrl+C means when no text is selected. */
    something(source: { text: string; what: string } | null | undefined): void {
        if (source) void this.text(source.text, source.what);
        else void this.copyPath();
    }

    async copyPath(): Promise<void> {
        const { browser, screen, shell } = this.shown,
            path = this.path();
        if (path === null) return;
        if (browser.opened === null && screen.view === 'document' && shell.ask('copy-path')) {
            return this.status('Path copied');
        }
        await this.text(path, path.includes('/') ? 'Path' : 'Name');
    }

    async text(text: string, what: string): Promise<void> {
        this.status((await copyText(text)) ? `${what} copied` : `${what} could not be copied.`);
    }
}

/** Without a selection the engine would put an empty text in place of what the user had copied before. */
export function guardClipboard(event: ClipboardEvent): void {
    if (isEditable(event.target) || getSelection()?.toString()) return;
    event.preventDefault();
    event.stopImmediatePropagation();
}
