import DOMPurify from 'dompurify';
import MarkdownIt from 'markdown-it';
import type { Chrome } from '../../chrome';
import type { Doc } from '../../doc';
import { el, iconButton } from '../../dom';
import { stripAddresses } from '../../links';
import type { ViewContext } from '../../view';
import { setPressed } from '../shared/pressed';
import { show as showText } from '../text';
import './markdown.css';

// Beyond this, laying out the rendered page would take longer than reading the source.
const SIZE_LIMIT = 4 * 1024 * 1024;
const EDITOR_LIMIT = 64 * 1024 * 1024;

export async function show(host: HTMLElement, doc: Doc, view: ViewContext): Promise<void> {
    if (doc.size > EDITOR_LIMIT) return (await import('../largetext')).show(host, doc, view);
    if (doc.size > SIZE_LIMIT) return showText(host, doc, view);
    const source = await doc.text(view.signal);
    const renderer = new MarkdownIt({ html: true, linkify: true, typographer: false });
    keepAlignment(renderer);
    const content = DOMPurify.sanitize(renderer.render(source), {
        RETURN_DOM_FRAGMENT: true,
        FORBID_TAGS: ['style', 'form', 'input', 'button', 'textarea', 'select', 'video', 'audio', 'source', 'iframe'],
        FORBID_ATTR: ['style', 'class', 'srcset', 'name', 'background'],
        ALLOW_DATA_ATTR: false,
        ADD_ATTR: ['align'],
        SANITIZE_NAMED_PROPS: true,
    });
    tame(content);
    const article = el(
        'article',
        { class: 'sheet enter prose', tabindex: '0', 'data-focus': '' },
        el('div', { class: 'prose-column' }),
    );
    article.firstElementChild?.append(content);
    article.addEventListener('click', event => {
        const address = (event.target as Element).closest('a')?.dataset['address'] ?? '';
        if (address.startsWith('#')) jump(article, address.slice(1));
        else if (address) view.chrome.status(address);
    });
    view.zoomable(article);

    let sourceView: AbortController | undefined;
    const toggle = iconButton('code', 'Source', () => {
        if (sourceView) {
            sourceView.abort();
            sourceView = undefined;
            host.replaceChildren(article);
            view.chrome.tools(toggle);
            article.focus();
            showPressed();
            return;
        }
        sourceView = new AbortController();
        const signal = AbortSignal.any([view.signal, sourceView.signal]);
        const chrome: Chrome = {
            meta: text => view.chrome.meta(text),
            status: text => view.chrome.status(text),
            tools: (...buttons) => view.chrome.tools(toggle, ...buttons),
        };
        host.replaceChildren();
        showPressed();
        showText(host, doc, view.nested(signal, chrome)).catch((error: unknown) => {
            if (!signal.aborted) view.chrome.status(error instanceof Error ? error.message : String(error));
        });
    });
    const showPressed = () => {
        setPressed(toggle, sourceView !== undefined);
    };
    view.chrome.tools(toggle);
    host.append(article);
    article.focus();
}

/** Columns of tables are aligned by a style, which the sanitizer takes away; an attribute says the same. */
function keepAlignment(renderer: InstanceType<typeof MarkdownIt>): void {
    renderer.core.ruler.push('alignment', state => {
        for (const token of state.tokens) {
            const align = /^text-align:(left|center|right)$/.exec(String(token.attrGet('style') ?? ''))?.[1];
            if (align && /^t[hd]_open$/.test(token.type)) token.attrSet('align', align);
        }
    });
}

/** Links stay inert and pictures are only shown when the document carries them itself. */
function tame(content: DocumentFragment): void {
    stripAddresses(content);
    for (const link of content.querySelectorAll('a')) {
        link.dataset['address'] = link.getAttribute('href') ?? '';
        link.title = link.dataset['address'];
        link.removeAttribute('target');
        link.setAttribute('href', '#');
    }
    for (const image of content.querySelectorAll('img')) {
        if (image.getAttribute('src')?.startsWith('data:image/')) continue;
        image.replaceWith(el('span', { class: 'no-image' }, image.alt || image.getAttribute('src') || ''));
    }
    const used = new Set<string>();
    for (const heading of content.querySelectorAll('h1, h2, h3, h4, h5, h6')) {
        const slug = (heading.textContent ?? '')
            .trim()
            .toLowerCase()
            .replace(/[^\p{L}\p{N}\s-]/gu, '')
            .replace(/\s+/g, '-');
        if (used.has(slug)) continue;
        used.add(slug);
        heading.setAttribute('data-slug', slug);
    }
}

function jump(article: HTMLElement, name: string): void {
    const plain = decodeURIComponent(name).toLowerCase();
    for (const target of article.querySelectorAll<HTMLElement>('[data-slug], [id]')) {
        if (target.dataset['slug'] === plain || target.id === name || target.id === `user-content-${name}`)
            return target.scrollIntoView({ block: 'start' });
    }
}
