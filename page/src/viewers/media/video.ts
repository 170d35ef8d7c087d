import type { Doc } from '../../doc';
import { el, iconButton, toolbar } from '../../dom';
import { formatSize } from '../../format';
import type { ViewContext } from '../../view';
import { showAudio } from './audio';
import { Player } from './player';

const QUIET_AFTER = 2500;

export async function show(host: HTMLElement, doc: Doc, view: ViewContext): Promise<void> {
    const frame = el('div', {
        class: 'film enter',
        tabindex: '0',
        'data-focus': '',
        role: 'group',
        'aria-label': doc.name,
    });
    const fullscreen = () => {
        if (document.fullscreenElement) void document.exitFullscreen();
        else if (document.fullscreenEnabled) frame.requestFullscreen().catch(() => view.post({ type: 'max' }));
        else view.post({ type: 'max' });
    };
    const player = new Player(doc, view, 'video', fullscreen);
    await player.load();
    if (!(await player.hasPicture())) return showAudio(host, player);

    const video = player.element as HTMLVideoElement;
    view.chrome.meta(`${video.videoWidth} × ${video.videoHeight} · ${formatSize(doc.size)}`);
    const bar = toolbar(
        el(
            'div',
            { class: 'capsule media-bar enter' },
            iconButton('back-10', 'Back 10 s (J)', () => player.run({ do: 'seek', by: -10 })),
            player.play,
            iconButton('forward-10', 'Forward 10 s (L)', () => player.run({ do: 'seek', by: 10 })),
            player.elapsed,
            player.seek.element,
            player.remaining,
            player.mute,
            player.volume.element,
            el('span', { class: 'sep' }),
            player.speedControl(),
            player.captions,
            iconButton('fullscreen', 'Full screen (F)', fullscreen),
        ),
        'Playback',
    );
    frame.append(video, el('div', { class: 'media-dock', 'data-theme': 'dark' }, bar));
    video.addEventListener('click', () => player.run({ do: 'toggle' }));
    video.addEventListener('dblclick', fullscreen);
    hideWhenQuiet(frame, bar, video, view.signal);
    host.append(frame);
}

/**
 * While the film runs, its controls leave after a while without pointer or key; never while one of them has the focus.
 */
function hideWhenQuiet(frame: HTMLElement, bar: HTMLElement, video: HTMLVideoElement, signal: AbortSignal): void {
    let timer = 0;
    const wake = () => {
        frame.classList.remove('quiet');
        clearTimeout(timer);
        timer = window.setTimeout(() => {
            const busy = video.paused || bar.matches(':hover') || bar.querySelector(':focus-visible') !== null;
            frame.classList.toggle('quiet', !busy);
        }, QUIET_AFTER);
    };
    for (const type of ['pointermove', 'pointerdown', 'keydown']) document.addEventListener(type, wake, { signal });
    for (const type of ['play', 'pause']) video.addEventListener(type, wake, { signal });
    signal.addEventListener('abort', () => clearTimeout(timer));
}
