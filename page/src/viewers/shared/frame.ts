import { el } from '../../dom';
import { stripAddresses } from '../../links';

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
    stripAddresses(root);
    for (const link of root.querySelectorAll('a')) {
        const address = link.getAttribute('href') ?? '';
        // A jump inside the document is harmless and useful.
        if (address.startsWith('#')) continue;
        link.removeAttribute('href');
        link.removeAttribute('target');
        if (address && !link.hasAttribute('title')) link.setAttribute('title', address);
    }
}

/** Keys pressed inside a frame count outside of it too: the page and the viewer answer them as anywhere else. */
export function forwardKeys(inner: Document, outer: HTMLElement): void {
    inner.addEventListener('keydown', event => {
        const { key, code, ctrlKey, metaKey, altKey, shiftKey } = event;
        const selected = (inner.getSelection()?.toString() ?? '') !== '';
        // What is selected in the frame is copied there.
        if (selected && (ctrlKey || metaKey) && key.toLowerCase() === 'c') return;
        const init = { key, code, ctrlKey, metaKey, altKey, shiftKey, bubbles: true, cancelable: true };
        if (!outer.dispatchEvent(new KeyboardEvent('keydown', init))) event.preventDefault();
    });
    inner.addEventListener('copy', event => {
        if (!inner.getSelection()?.toString()) event.preventDefault();
    });
}
