import { el } from '../../dom';

const BLOCKED_ELEMENTS = 'script, iframe, frame, object, embed, base, meta, form, portal, link, applet';
const FRAME_MILLISECONDS = 5000;

/**
 * Foreign markup lives in a frame that may neither run scripts nor load anything. The frame keeps this page's origin,
 * so that the finished tree can be put into it; it must never be allowed scripts, because those would then reach this
 * page.
 */
export async function openFrame(host: HTMLElement, title: string, signal: AbortSignal): Promise<Document> {
    const frame = el('iframe', {
        class: 'foreign',
        sandbox: 'allow-same-origin',
        src: new URL('frame.html', document.baseURI).href,
        title,
    });
    await new Promise<void>((resolve, reject) => {
        const timer = setTimeout(
            () => reject(new Error('The document could not be prepared for viewing.')),
            FRAME_MILLISECONDS,
        );
        frame.addEventListener(
            'load',
            () => {
                clearTimeout(timer);
                resolve();
            },
            { once: true },
        );
        signal.addEventListener('abort', () => {
            clearTimeout(timer);
            reject(signal.reason);
        });
        host.append(frame);
    });
    const inner = frame.contentDocument;
    if (!inner) throw new Error('The document could not be prepared for viewing.');
    return inner;
}

/**
 * Nothing in the frame may run anyway. This takes out what would only fail or mislead: active elements, handlers, and
 * links, whose address becomes a tooltip.
 */
export function disarm(root: ParentNode): void {
    for (const element of root.querySelectorAll(BLOCKED_ELEMENTS)) element.remove();
    for (const element of root.querySelectorAll('*')) {
        for (const { name } of [...element.attributes])
            if (name.toLowerCase().startsWith('on')) element.removeAttribute(name);
    }
    for (const link of root.querySelectorAll('a[href], area[href]')) {
        const address = link.getAttribute('href') ?? '';
        // A jump inside the document is harmless and useful.
        if (address.startsWith('#')) continue;
        link.removeAttribute('href');
        link.removeAttribute('target');
        if (!link.hasAttribute('title')) link.setAttribute('title', address);
    }
}
