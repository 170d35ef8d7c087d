import type { Doc } from '../../doc';
import { el, iconButton } from '../../dom';
import { formatSize } from '../../format';
import type { Keymap } from '../../keys';
import { canReadNatively } from '../../reads';
import type { ViewContext } from '../../view';
import { followPointer } from '../shared/drag';
import { setPressed } from '../shared/pressed';
import { clampOffset, clampScale, fitScale, nextStep, type Point, percent, type Size, zoomAbout } from '../shared/zoom';
import './image.css';

const OPAQUE = new Set(['jpg', 'jpeg', 'jfif', 'bmp']);
const SAMPLE_SIDE = 32;
const PAN_STEP = 60;
const WHEEL_PAUSE = 400;
const LARGE = 8 * 1024 * 1024;
const MENDED_LIMIT = 128 * 1024 * 1024;
const JPEG_END = Uint8Array.of(0xff, 0xd9);
const DAMAGED = 'This picture is damaged, or its format is not supported.';

export async function show(host: HTMLElement, doc: Doc, view: ViewContext): Promise<void> {
    const picture = await load(doc, view);
    new ImageView(host, doc, view, picture).start();
}

/** An <img> decodes natively and never runs what an SVG may carry. */
async function load(doc: Doc, view: ViewContext): Promise<HTMLImageElement> {
    const { signal } = view;
    const image = await decode(doc, await sourceOf(doc, signal), signal);
    if (!OPAQUE.has(doc.ext) || isWhole(image)) return image;
    // The engine draws nothing of a photo that ends too early; with an end put to it, it draws what there is.
    const mended = doc.size <= MENDED_LIMIT ? await decode(doc, await withEnd(doc, signal), signal) : image;
    if (!hasPixels(mended)) throw new Error(DAMAGED);
    view.notice('This picture is incomplete: its file ends too early or is damaged. What could be read is shown.');
    return mended;
}

/**
 * A large picture on the private scheme holds up the page for a tenth of a second and more. A drawing stays there: it is
 * text and small, and needs its type.
 */
async function sourceOf(doc: Doc, signal: AbortSignal): Promise<string> {
    if (doc.size <= LARGE || doc.ext === 'svg' || !canReadNatively()) return doc.url;
    const parts: BlobPart[] = [];
    for (let at = 0; at < doc.size; at += LARGE) parts.push(await doc.range(at, LARGE, signal));
    return addressOf(new Blob(parts), signal);
}

async function withEnd(doc: Doc, signal: AbortSignal): Promise<string> {
    return addressOf(new Blob([await doc.bytes(signal), JPEG_END], { type: 'image/jpeg' }), signal);
}

/** Holds as long as the view: a picture that was drawn may be read again. */
function addressOf(blob: Blob, signal: AbortSignal): string {
    const url = URL.createObjectURL(blob);
    signal.addEventListener('abort', () => URL.revokeObjectURL(url));
    return url;
}

async function decode(doc: Doc, url: string, signal: AbortSignal): Promise<HTMLImageElement> {
    const image = el('img', { alt: doc.name, draggable: 'false', decoding: 'async' });
    await new Promise<void>((resolve, reject) => {
        const stop = () => {
            image.removeAttribute('src');
            reject(signal.reason);
        };
        signal.addEventListener('abort', stop, { once: true });
        image.addEventListener('load', () => resolve(), { once: true });
        image.addEventListener('error', () => reject(new Error(DAMAGED)), { once: true });
        image.src = url;
    });
    if (image.naturalWidth > 0) await image.decode().catch(() => undefined);
    signal.throwIfAborted();
    return image;
}

/** Whether every part of an opaque picture can be seen. */
function isWhole(image: HTMLImageElement): boolean {
    return sampleOf(image)?.every((value, i) => i % 4 !== 3 || value > 0) ?? true;
}

/** Whether anything of a broken picture can be seen. */
function hasPixels(image: HTMLImageElement): boolean {
    const pixels = sampleOf(image);
    return pixels?.some((value, i) => i % 4 === 3 && value > 0) ?? false;
}

/** The picture drawn very small; null where a drawing with foreign parts keeps its pixels to itself. */
function sampleOf(image: HTMLImageElement): Uint8ClampedArray | null {
    const canvas = el('canvas', { width: SAMPLE_SIDE, height: SAMPLE_SIDE });
    const context = canvas.getContext('2d', { willReadFrequently: true });
    try {
        context?.drawImage(image, 0, 0, SAMPLE_SIDE, SAMPLE_SIDE);
        return context?.getImageData(0, 0, SAMPLE_SIDE, SAMPLE_SIDE).data ?? null;
    } catch {
        return null;
    }
}

/**
 * A see-through picture stands on a faint board that differs from its own tone, so that dark line art shows in a dark
 * window.
 */
function groundFor(image: HTMLImageElement): string[] {
    const pixels = sampleOf(image);
    if (!pixels) return ['see-through', 'on-light'];
    let weight = 0;
    let light = 0;
    for (let i = 0; i < pixels.length; i += 4) {
        const [r = 0, g = 0, b = 0, alpha = 0] = pixels.subarray(i, i + 4);
        weight += alpha;
        light += alpha * (0.2126 * r + 0.7152 * g + 0.0722 * b);
    }
    if (weight > (pixels.length / 4) * 250) return [];
    return ['see-through', weight > 0 && light / weight > 150 ? 'on-dark' : 'on-light'];
}

class ImageView {
    private readonly canvas: HTMLElement;
    private readonly value = el('button', { class: 'btn value', type: 'button', title: 'Actual size (1)' });
    private readonly fitButton = iconButton('fit', 'Fit to window (0)', () => this.fit());
    private readonly natural: Size;
    private mode: 'fit' | 'free' = 'fit';
    private scale = 1;
    private offset: Point = { x: 0, y: 0 };
    private turn = 0;
    private wheelZoomed = Number.NEGATIVE_INFINITY;

    constructor(
        private readonly host: HTMLElement,
        private readonly doc: Doc,
        private readonly view: ViewContext,
        private readonly image: HTMLImageElement,
    ) {
        // A drawing without a size of its own has none to report; it then takes a common one.
        this.natural = { width: image.naturalWidth || 600, height: image.naturalHeight || 600 };
        this.canvas = el(
            'div',
            { class: 'picture', tabindex: '0', role: 'img', 'aria-label': doc.name, 'data-focus': '' },
            image,
        );
        if (!OPAQUE.has(doc.ext)) image.classList.add(...groundFor(image));
    }

    start(): void {
        const { signal, chrome } = this.view;
        this.host.append(this.canvas);
        if (this.image.naturalWidth > 0)
            chrome.meta(`${this.image.naturalWidth} × ${this.image.naturalHeight} · ${formatSize(this.doc.size)}`);
        this.value.addEventListener('click', () => this.actual());
        this.view.bar(
            [
                el(
                    'span',
                    { class: 'zoomset' },
                    iconButton('zoom-out', 'Zoom out (−)', () => this.step(-1)),
                ),
                this.value,
                el(
                    'span',
                    { class: 'zoomset' },
                    iconButton('zoom-in', 'Zoom in (+)', () => this.step(1)),
                ),
                this.fitButton,
            ],
            [
                iconButton('rotate', 'Rotate (R)', () => this.rotate()),
                iconButton('fullscreen', 'Full screen (F)', () => this.view.post({ type: 'max' })),
            ],
        );
        this.canvas.addEventListener('wheel', event => this.wheel(event), { passive: false });
        this.canvas.addEventListener('dblclick', event =>
            this.mode === 'fit' ? this.zoomTo(1, this.fromCentre(event)) : this.fit(),
        );
        this.canvas.addEventListener('pointerdown', event => this.drag(event));
        this.pinch();
        this.view.keys(this.keymap());
        const resized = new ResizeObserver(() => this.apply());
        resized.observe(this.canvas);
        signal.addEventListener('abort', () => {
            resized.disconnect();
            this.image.removeAttribute('src');
        });
        this.apply();
    }

    private room(): Size {
        const style = getComputedStyle(this.canvas);
        return {
            width: this.canvas.clientWidth - parseFloat(style.paddingLeft) - parseFloat(style.paddingRight),
            height: this.canvas.clientHeight - parseFloat(style.paddingTop) - parseFloat(style.paddingBottom),
        };
    }

    private turned(): Size {
        const { width, height } = this.natural;
        return this.turn % 2 ? { width: height, height: width } : { width, height };
    }

    /** A point of the window as seen from the middle of the free room. */
    private fromCentre(event: { clientX: number; clientY: number }): Point {
        const box = this.canvas.getBoundingClientRect();
        const style = getComputedStyle(this.canvas);
        const room = this.room();
        return {
            x: event.clientX - box.left - parseFloat(style.paddingLeft) - room.width / 2,
            y: event.clientY - box.top - parseFloat(style.paddingTop) - room.height / 2,
        };
    }

    private apply(): void {
        const room = this.room();
        const size = this.turned();
        if (this.mode === 'fit') {
            this.scale = fitScale(size, room);
            this.offset = { x: 0, y: 0 };
        }
        this.offset = clampOffset(this.offset, size, room, this.scale);
        const { style } = this.image;
        style.width = `${this.natural.width * this.scale}px`;
        style.height = `${this.natural.height * this.scale}px`;
        style.transform = `translate(-50%, -50%) translate(${this.offset.x}px, ${this.offset.y}px) rotate(${this.turn * 90}deg)`;
        this.image.classList.toggle('pixels', this.scale >= 4);
        this.canvas.classList.toggle(
            'movable',
            size.width * this.scale > room.width + 1 || size.height * this.scale > room.height + 1,
        );
        this.value.textContent = percent(this.scale);
        setPressed(this.fitButton, this.mode === 'fit');
    }

    private fit(): void {
        this.mode = 'fit';
        this.apply();
    }

    private actual(): void {
        this.zoomTo(1, { x: 0, y: 0 });
    }

    private step(direction: 1 | -1): void {
        this.zoomTo(nextStep(this.scale, direction), { x: 0, y: 0 });
    }

    private rotate(): void {
        this.turn = (this.turn + 1) % 4;
        this.apply();
    }

    private zoomTo(scale: number, about: Point): void {
        const to = clampScale(scale);
        this.offset = zoomAbout(this.offset, about, this.scale, to);
        this.scale = to;
        this.mode = 'free';
        this.apply();
    }

    private moveBy(x: number, y: number): void {
        this.offset = { x: this.offset.x + x, y: this.offset.y + y };
        this.apply();
    }

    private wheel(event: WheelEvent): void {
        event.preventDefault();
        // A fitted picture has nowhere to go, so the plain wheel makes it larger; the same turn of the wheel goes on so.
        const goesOn = event.timeStamp - this.wheelZoomed < WHEEL_PAUSE;
        if (!event.ctrlKey && !goesOn && this.mode === 'free') return this.moveBy(-event.deltaX, -event.deltaY);
        if (!event.ctrlKey) this.wheelZoomed = event.timeStamp;
        this.zoomTo(this.scale * Math.exp(-event.deltaY / 240), this.fromCentre(event));
    }

    private drag(event: PointerEvent): void {
        if (event.button !== 0 || !this.canvas.classList.contains('movable')) return;
        event.preventDefault();
        this.canvas.focus();
        this.canvas.classList.add('moving');
        let last = { x: event.clientX, y: event.clientY };
        const move = (e: PointerEvent) => {
            this.moveBy(e.clientX - last.x, e.clientY - last.y);
            last = { x: e.clientX, y: e.clientY };
        };
        followPointer(this.canvas, event, move, () => this.canvas.classList.remove('moving'));
    }

    /** The engine reports a pinch on a touch pad as gesture events. */
    private pinch(): void {
        let from = 1;
        this.canvas.addEventListener('gesturestart', event => {
            event.preventDefault();
            from = this.scale;
        });
        this.canvas.addEventListener('gesturechange', event => {
            event.preventDefault();
            const gesture = event as Event & { scale: number; clientX: number; clientY: number };
            this.zoomTo(from * gesture.scale, this.fromCentre(gesture));
        });
    }

    private keymap(): Keymap {
        const pan = (key: string, x: number, y: number) => ({ keys: key, run: () => this.pan(x, y) });
        return [
            { keys: ['+', '=', 'Ctrl++', 'Ctrl+='], label: 'Zoom in', run: () => this.step(1) },
            { keys: ['-', '_', 'Ctrl+-'], label: 'Zoom out', run: () => this.step(-1) },
            { keys: ['0', 'Ctrl+0'], label: 'Fit to window', run: () => this.fit() },
            { keys: '1', label: 'Actual size', run: () => this.actual() },
            { keys: 'R', label: 'Rotate', run: () => this.rotate() },
            pan('ArrowLeft', PAN_STEP, 0),
            pan('ArrowRight', -PAN_STEP, 0),
            pan('ArrowUp', 0, PAN_STEP),
            pan('ArrowDown', 0, -PAN_STEP),
        ];
    }

    /** A picture that fits leaves the arrows to the page. */
    private pan(x: number, y: number): boolean {
        if (!this.canvas.classList.contains('movable') || document.activeElement !== this.canvas) return false;
        this.moveBy(x, y);
        return true;
    }
}
