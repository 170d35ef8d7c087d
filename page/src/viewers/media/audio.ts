import type { Doc } from '../../doc';
import { el, icon, iconButton } from '../../dom';
import { formatDuration, formatSize } from '../../format';
import { kindOfExtension } from '../../kinds';
import type { ViewContext } from '../../view';
import { peaksOf } from './peaks';
import { Player } from './player';

const BARS = 98;
const WAVE_SAMPLE_RATE = 8000;
// Decoding takes memory in proportion to the playing time; beyond this the plain track has to do.
const WAVE_LIMIT = 24 * 1024 * 1024;
const WAVE_SECONDS = 30 * 60;

export async function show(host: HTMLElement, doc: Doc, view: ViewContext): Promise<void> {
    const player = new Player(doc, view, 'audio', () => view.post({ type: 'max' }));
    await player.load();
    showAudio(host, player);
}

export function showAudio(host: HTMLElement, player: Player): void {
    const { doc, view } = player;
    view.chrome.meta(formatSize(doc.size));
    const title =
        doc.originalExt && doc.name.toLowerCase().endsWith(`.${doc.originalExt}`)
            ? doc.name.slice(0, -doc.originalExt.length - 1)
            : doc.name;
    const { duration } = player.element;
    const facts = [
        kindOfExtension(doc.originalExt || doc.ext).label,
        ...(Number.isFinite(duration) ? [formatDuration(duration)] : []),
    ];
    const volume = el('span', { class: 'loudness' }, player.mute, player.volume.element);
    const card = el(
        'div',
        { class: 'card sound-card enter', tabindex: '0', 'data-focus': '', role: 'group', 'aria-label': doc.name },
        el(
            'div',
            { class: 'track' },
            el('div', { class: 'cover' }, icon('audio', 'sound')),
            el('div', { class: 'track-words' }, el('h1', { title: doc.name }, title), el('p', {}, facts.join(' · '))),
        ),
        el('div', { class: 'wave-box' }, player.seek.element),
        el('div', { class: 'times' }, player.elapsed, player.remaining),
        el(
            'div',
            { class: 'ctl' },
            el('span', { class: 'side' }, player.speedControl(), player.captions),
            iconButton('back-10', 'Back 10 s (J)', () => player.run({ do: 'seek', by: -10 })),
            player.play,
            iconButton('forward-10', 'Forward 10 s (L)', () => player.run({ do: 'seek', by: 10 })),
            el('span', { class: 'side end' }, volume),
        ),
    );
    player.element.hidden = true;
    host.append(el('div', { class: 'sound-stage' }, card, player.element));
    void drawWave(player);
}

/** The loudness over time in place of the plain track, for files small enough to decode as a whole. */
async function drawWave(player: Player): Promise<void> {
    const { doc, view } = player;
    if (doc.size > WAVE_LIMIT || !(player.element.duration <= WAVE_SECONDS)) return;
    try {
        const bytes = await doc.bytes(view.signal);
        const sound = await new OfflineAudioContext(1, 1, WAVE_SAMPLE_RATE).decodeAudioData(
            bytes.buffer as ArrayBuffer,
        );
        if (view.signal.aborted) return;
        const peaks = peaksOf(sound.getChannelData(0), BARS);
        const path = peaks
            .map((peak, i) => `M${3 + i * 6} ${(42 - 3 - peak * 36).toFixed(1)}V${(42 + 3 + peak * 36).toFixed(1)}`)
            .join('');
        const wave = (cls: string) => {
            const svg = document.createElementNS('http://www.w3.org/2000/svg', 'svg');
            svg.setAttribute('viewBox', `0 0 ${BARS * 6} 84`);
            svg.setAttribute('preserveAspectRatio', 'none');
            svg.setAttribute('class', `wave ${cls}`);
            const line = document.createElementNS('http://www.w3.org/2000/svg', 'path');
            line.setAttribute('d', path);
            svg.append(line);
            return svg;
        };
        player.seek.element.classList.add('waved');
        player.seek.element.prepend(wave('rest'), wave('played'));
    } catch {
        // Without a wave the plain track stays.
    }
}
