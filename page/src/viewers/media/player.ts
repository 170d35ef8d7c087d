import type { Doc } from '../../doc';
import { el, icon, iconButton } from '../../dom';
import { formatDuration } from '../../format';
import type { Keymap } from '../../keys';
import type { ViewContext } from '../../view';
import { setPressed } from '../shared/pressed';
import { COMMANDS, type MediaCommand, nextSpeed, remainingTime, SPEEDS } from './commands';
import { Slider } from './slider';
import './media.css';

const METADATA_MILLISECONDS = 20_000;
const ANSWER_MILLISECONDS = 10_000;
const PICTURE_MILLISECONDS = 1500;
const UNPLAYABLE = 'This file could not be played.';

export type MediaKind = 'audio' | 'video';

/**
 * One media element with everything that both players share: loading, the one request for a conversion, keys, controls.
 */
export class Player {
    readonly element: HTMLMediaElement;
    readonly play: HTMLButtonElement;
    readonly mute: HTMLButtonElement;
    readonly speed: HTMLButtonElement;
    readonly captions: HTMLButtonElement;
    readonly seek: Slider;
    readonly volume: Slider;
    readonly elapsed = el('span', { class: 'time' }, '0:00');
    readonly remaining = el('span', { class: 'time end' });
    private readonly menu: HTMLElement;
    private asked = false;

    constructor(
        readonly doc: Doc,
        readonly view: ViewContext,
        readonly kind: MediaKind,
        private readonly fullscreen: () => void,
    ) {
        const { signal } = view;
        this.element = el(kind, { preload: 'auto', playsinline: '' });
        this.play = iconButton('play', 'Play (Space)', () => this.run({ do: 'toggle' }), '');
        this.play.classList.add('go');
        this.mute = iconButton('volume', 'Mute (M)', () => this.run({ do: 'mute' }));
        this.speed = el(
            'button',
            { class: 'btn only', type: 'button', title: 'Speed (< >)', 'aria-label': 'Speed', 'aria-haspopup': 'menu' },
            '1×',
        );
        this.captions = iconButton('captions', 'Subtitles (C)', () => this.run({ do: 'captions' }));
        this.captions.hidden = true;
        this.seek = new Slider({
            label: 'Position',
            change: part => this.seekTo(part),
            text: part => `${formatDuration(part * this.duration)} of ${formatDuration(this.duration)}`,
        });
        this.volume = new Slider({
            label: 'Volume',
            cls: 'vol',
            change: part => {
                this.element.volume = part;
                this.element.muted = false;
            },
            key: event => {
                const by = { ArrowRight: 0.05, ArrowLeft: -0.05 }[event.key];
                if (by) this.run({ do: 'volume', by });
                return by !== undefined;
            },
            text: part => `${Math.round(part * 100)}%`,
        });
        this.menu = this.makeMenu();
        this.listen();
        view.keys(this.keymap());
        signal.addEventListener('abort', () => {
            // The source has to go before the element does, or its pipeline lives on.
            this.element.pause();
            this.element.removeAttribute('src');
            this.element.load();
        });
    }

    /**
     * Resolves when the file can be played. Never resolves after the shell was asked for a conversion: its answer
     * replaces this view.
     */
    async load(): Promise<void> {
        const { signal } = this.view;
        await new Promise<void>((resolve, reject) => {
            let playable = false;
            const fail = () =>
                this.convert().catch((error: unknown) => {
                    // Too late for the error view once the player stands.
                    if (playable) this.view.chrome.status(UNPLAYABLE);
                    else reject(error);
                });
            const timer = setTimeout(() => void fail(), METADATA_MILLISECONDS);
            this.element.addEventListener(
                'loadedmetadata',
                () => {
                    clearTimeout(timer);
                    playable = true;
                    resolve();
                },
                { once: true, signal },
            );
            this.element.addEventListener(
                'error',
                () => {
                    clearTimeout(timer);
                    void fail();
                },
                { signal },
            );
            signal.addEventListener('abort', () => {
                clearTimeout(timer);
                reject(signal.reason);
            });
            this.element.src = this.doc.url;
        });
        this.setTracks();
        this.showTime();
    }

    /** Whether there is a picture; the engine may tell only a moment after the rest. */
    async hasPicture(): Promise<boolean> {
        const video = this.element as HTMLVideoElement;
        const { signal } = this.view;
        if (!video.videoWidth) {
            await new Promise<void>(resolve => {
                const over = new AbortController();
                const end = () => {
                    clearTimeout(timer);
                    over.abort();
                    resolve();
                };
                const timer = setTimeout(end, PICTURE_MILLISECONDS);
                // Data may be there before its size is; only a size ends the wait early.
                const look = () => video.videoWidth > 0 && end();
                for (const type of ['resize', 'loadeddata', 'canplay', 'progress']) {
                    video.addEventListener(type, look, { signal: over.signal });
                }
                signal.addEventListener('abort', end, { once: true });
            });
        }
        return video.videoWidth > 0;
    }

    private async convert(): Promise<void> {
        const { signal } = this.view;
        if (this.asked || signal.aborted) return;
        this.asked = true;
        this.view.post({
            type: 'transcode-media',
            url: this.doc.url,
            isAudio: this.kind === 'audio',
            name: this.doc.name,
        });
        // The shell says nothing when it no longer knows the file.
        await new Promise((_, reject) => {
            const timer = setTimeout(() => reject(new Error(UNPLAYABLE)), ANSWER_MILLISECONDS);
            signal.addEventListener('abort', () => clearTimeout(timer));
        });
    }

    private get duration(): number {
        return Number.isFinite(this.element.duration) ? this.element.duration : 0;
    }

    private listen(): void {
        const { element } = this;
        const { signal } = this.view;
        const on = (types: string, act: () => void) => {
            for (const type of types.split(' ')) element.addEventListener(type, act, { signal });
        };
        on('play pause ended', () => {
            const playing = !element.paused && !element.ended;
            this.play.replaceChildren(icon(playing ? 'pause' : 'play'));
            this.play.title = playing ? 'Pause (Space)' : 'Play (Space)';
            this.play.setAttribute('aria-label', this.play.title);
        });
        on('timeupdate durationchange progress seeking', () => this.showTime());
        on('volumechange', () => {
            const silent = element.muted || element.volume === 0;
            this.mute.replaceChildren(icon(silent ? 'mute' : 'volume'));
            setPressed(this.mute, silent);
            this.volume.set(silent ? 0 : element.volume);
        });
        on('ratechange', () => {
            this.speed.textContent = `${element.playbackRate}×`;
            for (const item of this.menu.children)
                item.setAttribute(
                    'aria-checked',
                    String(Number((item as HTMLElement).dataset['speed']) === element.playbackRate),
                );
        });
        element.textTracks.addEventListener('addtrack', () => this.setTracks(), { signal });
        this.volume.set(element.volume);
    }

    private showTime(): void {
        const { element, duration } = this;
        const { buffered } = element;
        const loaded = buffered.length > 0 && duration > 0 ? buffered.end(buffered.length - 1) / duration : 0;
        this.seek.set(duration > 0 ? element.currentTime / duration : 0, Math.min(1, loaded));
        this.elapsed.textContent = formatDuration(element.currentTime);
        this.remaining.textContent = duration > 0 ? remainingTime(element.currentTime, duration) : '';
    }

    private seekTo(part: number): void {
        if (this.duration > 0) this.element.currentTime = part * this.duration;
    }

    private subtitleTracks(): TextTrack[] {
        return [...this.element.textTracks].filter(track => track.kind === 'subtitles' || track.kind === 'captions');
    }

    private setTracks(): void {
        this.captions.hidden = this.subtitleTracks().length === 0;
    }

    /** Off, then each track in turn. */
    private nextCaptions(): void {
        const tracks = this.subtitleTracks();
        const shown = tracks.findIndex(track => track.mode === 'showing');
        const next = tracks[shown + 1];
        for (const track of tracks) track.mode = track === next ? 'showing' : 'disabled';
        setPressed(this.captions, next !== undefined);
        if (tracks.length > 0)
            this.view.chrome.status(next ? `Subtitles: ${next.label || next.language || 'on'}` : 'Subtitles off');
    }

    run(command: MediaCommand): void {
        const { element } = this;
        switch (command.do) {
            case 'toggle':
                if (element.paused || element.ended) element.play().catch(() => undefined);
                else element.pause();
                break;
            case 'seek':
                if (this.duration > 0)
                    element.currentTime = Math.max(0, Math.min(this.duration, element.currentTime + command.by));
                break;
            case 'seekTo':
                this.seekTo(command.part);
                break;
            case 'volume':
                element.muted = false;
                element.volume = Math.max(0, Math.min(1, Math.round((element.volume + command.by) * 100) / 100));
                break;
            case 'mute':
                element.muted = !element.muted;
                break;
            case 'captions':
                this.nextCaptions();
                break;
            case 'fullscreen':
                this.fullscreen();
                break;
            case 'speed':
                element.playbackRate = nextSpeed(element.playbackRate, command.step);
        }
    }

    private keymap(): Keymap {
        return COMMANDS.filter(({ command }) => command.do !== 'fullscreen' || this.kind === 'video').map(row => ({
            ...row,
            run: event => {
                // A focused button takes Space for itself.
                if (event.key === ' ' && event.target instanceof HTMLButtonElement) return false;
                return this.run(row.command) ?? true;
            },
        }));
    }

    /** The speed button with its menu, which opens upwards. */
    speedControl(): HTMLElement {
        return el('span', { class: 'speed' }, this.speed, this.menu);
    }

    private makeMenu(): HTMLElement {
        const menu = el('div', { class: 'speed-menu', role: 'menu', 'aria-label': 'Speed' });
        menu.hidden = true;
        const close = () => {
            menu.hidden = true;
            this.speed.focus();
        };
        for (const value of [...SPEEDS].reverse()) {
            const item = el(
                'button',
                {
                    class: 'btn',
                    type: 'button',
                    role: 'menuitemradio',
                    'data-speed': value,
                    'aria-checked': String(value === 1),
                    tabindex: '-1',
                },
                `${value}×`,
            );
            item.addEventListener('click', () => {
                this.element.playbackRate = value;
                close();
            });
            menu.append(item);
        }
        this.speed.addEventListener('click', () => {
            menu.hidden = !menu.hidden;
            if (!menu.hidden) menu.querySelector<HTMLElement>('[aria-checked=true]')?.focus();
        });
        menu.addEventListener('keydown', event => {
            const items = [...menu.children] as HTMLElement[];
            const at = items.indexOf(document.activeElement as HTMLElement);
            const step = { ArrowDown: 1, ArrowUp: -1 }[event.key];
            if (step) items[(at + step + items.length) % items.length]?.focus();
            else if (event.key === 'Escape') close();
            else return;
            event.preventDefault();
            event.stopPropagation();
        });
        menu.addEventListener('focusout', event => {
            if (!menu.contains(event.relatedTarget as Node | null) && event.relatedTarget !== this.speed)
                menu.hidden = true;
        });
        return menu;
    }
}
