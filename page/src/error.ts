import { adviceFor, SESSION_EXPIRED } from './advice';
import { post } from './bridge';
import { copyText } from './clipboard';
import { el, icon } from './dom';
import { extensionOf, type Kind } from './kinds';

export interface ErrorSpec {
    what: string;
    message: string;
    /** The user ended it; nothing is wrong. */
    cancelled: boolean;
    /** Leads back to the list that the item was opened from. */
    back?: () => void;
    /** Shows the file another way, where the page has it. */
    showAs?: () => void;
    status: (text: string) => void;
}

/** Whether going back to the list can work after this message. */
const canGoBack = (message: string): boolean => message !== SESSION_EXPIRED;

export function showError(host: HTMLElement, spec: ErrorSpec): void {
    const copy = async () =>
        spec.status((await copyText(spec.message)) ? 'Message copied' : 'The message could not be copied.');
    const back = spec.back && canGoBack(spec.message) ? spec.back : undefined;
    const advice = spec.cancelled ? '' : adviceFor(spec.message);
    const next = advice && el('p', { class: 'next' }, icon('info', 's'), el('span', {}, advice));
    // A cancelled item leads back to where it was opened; after a failure the user more likely wants something else.
    const backFirst = spec.cancelled && back;
    host.append(
        el(
            'div',
            { class: 'stage' },
            el(
                'div',
                { class: spec.cancelled ? 'card error calm enter' : 'card error enter', role: 'alert' },
                el(
                    'div',
                    { class: 'top' },
                    el('div', { class: 'badge' }, icon(spec.cancelled ? 'info' : 'alert')),
                    el(
                        'div',
                        { class: 'words' },
                        el('h1', {}, spec.what),
                        el('p', { class: 'say' }, spec.message),
                        next || null,
                    ),
                ),
                el(
                    'div',
                    { class: 'end' },
                    spec.cancelled
                        ? null
                        : el(
                              'button',
                              { class: 'btn left', type: 'button', onclick: copy },
                              icon('copy', 's'),
                              'Copy message',
                          ),
                    spec.showAs &&
                        el('button', { class: 'btn', type: 'button', onclick: spec.showAs }, 'Show the bytes'),
                    back &&
                        el(
                            'button',
                            {
                                class: backFirst ? 'btn main' : 'btn',
                                type: 'button',
                                onclick: back,
                                'data-focus': !!backFirst,
                            },
                            'Back to folder',
                        ),
                    el(
                        'button',
                        {
                            class: backFirst ? 'btn' : 'btn main',
                            type: 'button',
                            'data-focus': !backFirst,
                            onclick: () => post({ type: 'open-dialog' }),
                        },
                        'Open another…',
                    ),
                ),
            ),
        ),
    );
}

/** The heading of the card. */
export function whatFailed(kind: Kind, name: string): string {
    if (kind.family === 'archive') return 'This archive could not be opened';
    return extensionOf(name) ? 'This file could not be shown' : 'This item could not be opened';
}
