import { type Doc, Refusal } from '../../doc';
import { formatSize } from '../../format';
import type { ViewContext } from '../../view';
import { disarm, forwardKeys, openFrame } from '../shared/frame';
import './docx.css';

const SIZE_LIMIT = 64 * 1024 * 1024;
const DAMAGED = 'This document is DAMAGED, or it is not a Word document.';

const PAGE_STYLE = `
    :root { color-scheme: light; background: transparent; }
    body { margin: 0; background: transparent; color: #1d211f; }
    .docx-wrapper { background: transparent; padding: 0 12px 60px; display: flex; flex-flow: column; align-items: center; }
    .docx-wrapper > section.docx { background: #fff; border-radius: 3px; margin-bottom: 16px; box-shadow: 0 2px 6px rgb(0 0 0 / .18), 0 24px 64px -20px rgb(0 0 0 / .45), 0 0 0 1px rgb(0 0 0 / .08); max-width: 100%; overflow-wrap: anywhere; }
    img, svg { max-width: 100%; }
`;

export async function show(host: HTMLElement, doc: Doc, view: ViewContext): Promise<void> {
    if (doc.size > SIZE_LIMIT) throw new Refusal('This document is too large to be shown without an office program.');
    const [library, bytes] = await Promise.all([import('docx-preview'), doc.bytes(view.signal)]);
    view.signal.throwIfAborted();
    const body = document.createElement('div');
    const styles = document.createElement('div');
    try {
        await library.renderAsync(bytes, body, styles, {
            className: 'docx',
            inWrapper: true,
            breakPages: true,
            ignoreLastRenderedPageBreak: false,
            useBase64URL: true,
            renderAltChunks: false,
            experimental: false,
            debug: false,
        });
    } catch (error) {
        throw new Error(DAMAGED, { cause: error });
    }
    view.signal.throwIfAborted();
    if (!body.querySelector('section')) throw new Error(DAMAGED);
    disarm(body);

    const inner = await openFrame(host, doc.name, view.signal);
    const own = inner.createElement('style');
    own.textContent = PAGE_STYLE;
    inner.head.append(...[...styles.childNodes].map(node => inner.adoptNode(node)), own);
    inner.body.append(...[...body.childNodes].map(node => inner.adoptNode(node)));
    view.guard(inner);
    forwardKeys(inner, host);
    view.zoomable(inner.body);
    const pages = inner.querySelectorAll('section.docx').length;
    view.chrome.meta(`${pages} ${pages === 1 ? 'page' : 'pages'} · ${formatSize(doc.size)}`);
}
