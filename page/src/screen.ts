import type { Busy, Failure, FromShell, NativePreview, OpenContainer, OpenFile } from './bridge';

/** What stands on the page. */
export type Screen =
    | { view: 'blank' }
    | { view: 'start' }
    | { view: 'busy'; busy: Busy }
    | { view: 'document'; file: OpenFile }
    | { view: 'list'; list: OpenContainer }
    | { view: 'error'; failure: Failure; file?: OpenFile }
    | { view: 'native'; preview: NativePreview };

export interface State {
    /** Newest request seen. Requests have a number that only grows; an answer to an older one comes too late. */
    latest: number;
    screen: Screen;
}

/** What happens in the page itself. */
export type PageEvent = { type: 'waited' } | { type: 'failed'; file: OpenFile; message: string };

export const NOTHING_YET: State = { latest: 0, screen: { view: 'blank' } };

/** What is to stand after a message; the same state for one that comes too late or changes nothing in sight. */
export function next(state: State, message: FromShell | PageEvent): State {
    switch (message.type) {
        case 'waited':
            return state.screen.view === 'blank' ? { ...state, screen: { view: 'start' } } : state;
        case 'failed': {
            const { screen } = state;
            if (screen.view !== 'document' || screen.file !== message.file) return state;
            const { name, requestId, containerToken } = message.file;
            const failure: Failure = { type: 'error', name, requestId, message: message.message };
            if (containerToken !== undefined) failure.containerToken = containerToken;
            return { ...state, screen: { view: 'error', failure, file: message.file } };
        }
        case 'busy':
        case 'open':
        case 'error':
        case 'native-preview':
            // Newer than announced is welcome: cancelling and a missing file answer without "busy".
            if (message.requestId < state.latest) return state;
            return { latest: message.requestId, screen: screenOf(message) };
        default:
            return state;
    }
}

function screenOf(message: Busy | OpenFile | OpenContainer | Failure | NativePreview): Screen {
    switch (message.type) {
        case 'busy':
            return { view: 'busy', busy: message };
        case 'open':
            return message.kind === 'container' ? { view: 'list', list: message } : { view: 'document', file: message };
        case 'error':
            return { view: 'error', failure: message };
        case 'native-preview':
            return { view: 'native', preview: message };
    }
}
