import type { Screen } from './screen';

/** What the machine reads of a screen; people read the title strip. */
const STATUS: Record<Screen['view'], string> = {
    blank: '',
    start: 'start',
    busy: 'busy',
    document: 'busy',
    list: 'listing',
    error: 'error',
    native: 'native',
};

/** Tells which view stands, then what is in it, to whoever looks from outside the page. */
export function announce(screen: Screen, name: string, viewer = ''): void {
    const status = viewer ? 'shown' : STATUS[screen.view];
    document.documentElement.dataset.state = status;
    document.documentElement.dataset.viewer = viewer || status;
    let detail = name;
    if (screen.view === 'list') detail = screen.list.container.path;
    else if (screen.view === 'error') detail = screen.failure.message;
    document.title = name || 'Quillmere';
    const told = [status, viewer, detail].filter(Boolean).join(' ');
    window.dispatchEvent(new CustomEvent('page-status', { detail: told }));
}
