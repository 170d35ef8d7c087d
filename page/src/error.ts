import { post } from './bridge';
import { copyText } from './clipboard';
import { el, icon } from './dom';

export interface ErrorSpec {
    what: string;
    message: string;
    /** The user ended it; nothing is wrong. */
    cancelled: boolean;
    /** Leads back to the list that the item was opened from. */
    back?: () => void;
    status: (text: string) => void;
}

export const CANCELLED = 'Preview cancelled.';
const EXPIRED = /session expired/;

// The first pattern that fits decides; an empty text where the message says itself what to do.
const NEXT: [RegExp, string][] = [
    [/Open it again|Open the folder|smaller subfolder|Refresh the folder|Choose a /, ''],
    [
        /no longer|not available|unavailable or|access was denied|could not be read/,
        'Check that it has not been moved, renamed or locked, then open it again.',
    ],
    [/encrypted/, 'Unpack it with a program that asks for the password, then open the file.'],
    [/FFmpeg/, 'Install FFmpeg to play files of this kind here, or open the file in another player.'],
    [/codec/, 'Open the file in another player, or choose a different copy. The original was not changed.'],
    [
        /limit|exceeds|more than|larger than|too many|expands/,
        'Unpack it with another program, then open what you need.',
    ],
    [
        /corrupt|truncated|unsafe|conflicting|duplicate|unknown size/,
        'It may be damaged or made to do harm. Ask for a new copy from where it came from.',
    ],
    [/took too long|timed out/, 'Try again when the computer is less busy. The original was not changed.'],
];
const OTHERWISE = 'Open the file in another program, or choose a different copy. The original was not changed.';

/** What the user can do about a message. */
export const nextStep = (message: string): string => NEXT.find(([pattern]) => pattern.test(message))?.[1] ?? OTHERWISE;

/** Whether going back to the list can work after this message. */
export const canGoBack = (message: string): boolean => !EXPIRED.test(message);

export function showError(host: HTMLElement, spec: ErrorSpec): void {
    const copy = async () =>
        spec.status((await copyText(spec.message)) ? 'Message copied' : 'The message could not be copied.');
    const back = spec.back && canGoBack(spec.message) ? spec.back : undefined;
    const advice = spec.cancelled ? '' : nextStep(spec.message);
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
