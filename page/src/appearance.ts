import type { PlatformPreferences } from './bridge';
import { el } from './dom';

export interface Scheme {
    tint: string;
    theme: 'dark' | 'light';
    /** Hue in degrees that a coloured tint lends to the accent; null keeps the house colour. */
    accentHue: number | null;
}

export interface Photo {
    url: string;
    /** 0 to 1. */
    alpha: number;
    /** Radius in CSS pixels. */
    blur: number;
}

const FALLBACK_TINT = '#141614';
// Mid tones carry white ink up to about here.
const LIGHT_FROM = 0.32;
const COLOURED_FROM = 0.02;
const BLUR_PER_STEP = 0.4;

/**
 * Theme and accent of a tint: its luminance chooses the theme, its hue (in OKLab, when it has one) becomes the
 * accent's.
 */
export function schemeOf(color: unknown): Scheme {
    const tint = typeof color === 'string' && /^#[0-9a-f]{6}$/i.test(color) ? color.toLowerCase() : FALLBACK_TINT;
    const linear = (at: number) => {
        const c = parseInt(tint.slice(at, at + 2), 16) / 255;
        return c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4;
    };
    const r = linear(1),
        g = linear(3),
        b = linear(5);
    const l = Math.cbrt(0.4122 * r + 0.5363 * g + 0.0514 * b);
    const m = Math.cbrt(0.2119 * r + 0.6807 * g + 0.1074 * b);
    const s = Math.cbrt(0.0883 * r + 0.2817 * g + 0.63 * b);
    const greenRed = 1.978 * l - 2.4286 * m + 0.4506 * s,
        blueYellow = 0.0259 * l + 0.7828 * m - 0.8087 * s;
    const coloured = Math.hypot(greenRed, blueYellow) > COLOURED_FROM;
    return {
        tint,
        theme: 0.2126 * r + 0.7152 * g + 0.0722 * b >= LIGHT_FROM ? 'light' : 'dark',
        accentHue: coloured ? (Math.atan2(blueYellow, greenRed) * 180) / Math.PI : null,
    };
}

/** The photo behind the page, or null. A custom photo that has gone missing comes with both addresses empty. */
export function photoOf(prefs: Partial<PlatformPreferences>): Photo | null {
    const url = prefs.bgMode === 'photo' ? prefs.bgCustomUrl || prefs.bgPreset : '';
    if (typeof url !== 'string' || !url) return null;
    const share = (value: unknown, otherwise: number) =>
        typeof value === 'number' && Number.isFinite(value) ? Math.max(0, Math.min(100, value)) : otherwise;
    return { url, alpha: share(prefs.bgAlpha, 100) / 100, blur: share(prefs.bgBlur, 0) * BLUR_PER_STEP };
}

/** Applies the shell's preferences to the document and tells who asked when they change. */
export class Appearance extends EventTarget {
    showZoom = false;
    airOutline = true;
    private readonly backdrop = new Backdrop();

    apply(prefs: Partial<PlatformPreferences>): void {
        const root = document.documentElement,
            scheme = schemeOf(prefs.bgColor);
        this.showZoom = prefs.showZoom === true;
        this.airOutline = prefs.airOutline !== false;
        root.dataset.theme = scheme.theme;
        root.dataset.air = this.airOutline ? 'on' : 'off';
        root.dataset.zoom = this.showZoom ? 'on' : 'off';
        root.style.setProperty('--tint', scheme.tint);
        if (scheme.accentHue === null) root.style.removeProperty('--accent-h');
        else root.style.setProperty('--accent-h', scheme.accentHue.toFixed(1));
        this.backdrop.show(photoOf(prefs), scheme.theme);
        this.dispatchEvent(new Event('change'));
    }
}

/** The photo, the veil over it and the soft copy that panes show. */
class Backdrop {
    private readonly element = el('div', { class: 'photo' });
    private image: HTMLImageElement | null = null;
    private url = '';
    private drawn = '';

    show(photo: Photo | null, theme: Scheme['theme']): void {
        if (!photo) return this.clear();
        this.element.style.setProperty('--photo-alpha', String(photo.alpha));
        this.element.style.setProperty('--photo-blur', `${photo.blur}px`);
        if (photo.url !== this.url) {
            this.url = photo.url;
            this.image = el('img', { alt: '', src: photo.url });
            this.element.replaceChildren(this.image);
        }
        const image = this.image!;
        image.decode().then(
            () => {
                if (image !== this.image) return;
                if (!this.element.isConnected) document.body.prepend(this.element);
                document.documentElement.dataset.photo = 'on';
                this.soften(image, photo.alpha, theme);
            },
            () => {
                if (image === this.image) this.clear();
            },
        );
    }

    private clear(): void {
        this.url = this.drawn = '';
        this.image = null;
        this.element.remove();
        delete document.documentElement.dataset.photo;
        document.documentElement.style.removeProperty('--photo-soft');
    }

    private soften(image: HTMLImageElement, alpha: number, theme: Scheme['theme']): void {
        const key = `${this.url} ${alpha} ${theme}`;
        if (key === this.drawn) return;
        this.drawn = key;
        document.documentElement.style.setProperty('--photo-soft', `url(${softCopy(image, alpha, theme)})`);
    }
}

function canvas(width: number, height: number): [HTMLCanvasElement, CanvasRenderingContext2D] {
    const element = Object.assign(document.createElement('canvas'), { width, height });
    const context = element.getContext('2d')!;
    context.imageSmoothingQuality = 'high';
    return [element, context];
}

/**
 * A tiny picture of the photo under a veil of the theme's base colour: shrunk, then doubled with a small box blur each
 * time.
 */
function softCopy(image: HTMLImageElement, alpha: number, theme: Scheme['theme']): string {
    const [middle, shrink] = canvas(128, 80);
    const cover = Math.max(128 / image.naturalWidth, 80 / image.naturalHeight);
    const width = image.naturalWidth * cover,
        height = image.naturalHeight * cover;
    shrink.drawImage(image, (128 - width) / 2, (80 - height) / 2, width, height);
    let [picture, context] = canvas(16, 10);
    context.drawImage(middle, 0, 0, 16, 10);
    for (const [w, h] of [
        [31, 20],
        [62, 40],
        [124, 80],
        [248, 160],
    ] as const) {
        const [larger, onto] = canvas(w, h);
        for (let i = 0; i < 9; i++) {
            onto.globalAlpha = 1 / (i + 1);
            onto.drawImage(picture, (i % 3) - 2, Math.floor(i / 3) - 2, w + 4, h + 4);
        }
        picture = larger;
        context = onto;
    }
    context.globalAlpha = theme === 'light' ? 0.3 : 0.28;
    context.fillStyle = theme === 'light' ? '#f6f4ef' : '#161816';
    context.fillRect(0, 0, picture.width, picture.height);
    context.globalAlpha = alpha;
    context.globalCompositeOperation = 'destination-in';
    context.fillRect(0, 0, picture.width, picture.height);
    return picture.toDataURL();
}
