import { defaultKeymap } from '@codemirror/commands';
import {
    codeFolding,
    foldGutter,
    foldKeymap,
    HighlightStyle,
    LanguageDescription,
    syntaxHighlighting,
} from '@codemirror/language';
import { languages } from '@codemirror/language-data';
import {
    closeSearchPanel,
    findNext,
    findPrevious,
    openSearchPanel,
    SearchQuery,
    search,
    searchPanelOpen,
    setSearchQuery,
} from '@codemirror/search';
import { Compartment, EditorState, type Extension } from '@codemirror/state';
import {
    drawSelection,
    EditorView,
    highlightActiveLine,
    highlightActiveLineGutter,
    highlightSpecialChars,
    keymap,
    lineNumbers,
} from '@codemirror/view';
import { tags as t } from '@lezer/highlight';
import { decodeText } from '../../decode';
import type { Doc } from '../../doc';
import { el, iconButton } from '../../dom';
import type { ViewContext } from '../../view';
import { FindBar } from '../shared/findbar';
import './text.css';

const HIGHLIGHT_LIMIT = 8 * 1024 * 1024;
const COUNT_LIMIT = 1000;
const COUNT_MILLISECONDS = 40;
const PROSE_EXTENSIONS = new Set(['', 'txt', 'text', 'md', 'markdown', 'rst', 'tex', 'srt', 'vtt', 'eml', 'rtf']);

const colours = HighlightStyle.define([
    { tag: [t.keyword, t.modifier, t.controlKeyword, t.operatorKeyword, t.self, t.null], color: 'var(--syn-key)' },
    {
        tag: [t.string, t.special(t.string), t.regexp, t.character, t.attributeValue, t.inserted],
        color: 'var(--syn-str)',
    },
    { tag: [t.number, t.bool, t.atom, t.unit, t.color, t.escape], color: 'var(--syn-num)' },
    {
        tag: [
            t.function(t.variableName),
            t.function(t.propertyName),
            t.function(t.definition(t.variableName)),
            t.labelName,
            t.meta,
            t.heading,
            t.link,
        ],
        color: 'var(--syn-fn)',
    },
    {
        tag: [t.typeName, t.className, t.namespace, t.tagName, t.attributeName, t.definition(t.propertyName)],
        color: 'var(--syn-type)',
    },
    { tag: [t.comment, t.deleted], color: 'var(--syn-com)' },
    { tag: t.heading, fontWeight: '600' },
    { tag: t.strong, fontWeight: '600' },
    { tag: t.emphasis, fontStyle: 'italic' },
]);

export async function show(host: HTMLElement, doc: Doc, view: ViewContext): Promise<void> {
    const { text, encoding } = decodeText(await doc.bytes(view.signal));
    view.signal.throwIfAborted();
    const description = LanguageDescription.matchFilename(languages, doc.name);
    const language = new Compartment();
    const wrapping = new Compartment();
    const wrapState = { on: PROSE_EXTENSIONS.has(doc.ext) };
    const coloured = text.length <= HIGHLIGHT_LIMIT;

    const position = el('span', {});
    const find = new FindBar({
        query: query => {
            editor.dispatch({ effects: setSearchQuery.of(new SearchQuery({ search: query, literal: true })) });
            if (query) findFrom(editor);
            report();
        },
        step: direction => {
            (direction > 0 ? findNext : findPrevious)(editor);
            report();
        },
        closed: () => {
            closeSearchPanel(editor);
            findButton.classList.remove('on');
            editor.focus();
        },
    });
    const report = () => find.report(countMatches(editor.state, find.text));
    const openFind = () => {
        const selection = editor.state.sliceDoc(editor.state.selection.main.from, editor.state.selection.main.to);
        openSearchPanel(editor);
        findButton.classList.add('on');
        find.open(selection.length <= 200 && !selection.includes('\n') ? selection : undefined);
        return true;
    };
    const toggleWrap = () => {
        wrapState.on = !wrapState.on;
        wrapButton.classList.toggle('on', wrapState.on);
        wrapButton.setAttribute('aria-pressed', String(wrapState.on));
        editor.dispatch({ effects: wrapping.reconfigure(wrapState.on ? EditorView.lineWrapping : []) });
        return true;
    };

    // Among a container's documents the plain arrows step to the neighbours; there is nothing to edit at the caret.
    const stepBy = (delta: number) => {
        if (!view.neighbours || !editor.state.selection.main.empty) return false;
        view.neighbours.go(delta);
        return true;
    };

    const extensions: Extension[] = [
        EditorState.readOnly.of(true),
        EditorView.contentAttributes.of({
            'aria-label': doc.name,
            'aria-readonly': 'true',
            spellcheck: 'false',
            autocorrect: 'off',
            autocapitalize: 'off',
        }),
        lineNumbers(),
        highlightSpecialChars(),
        drawSelection(),
        highlightActiveLine(),
        highlightActiveLineGutter(),
        wrapping.of(wrapState.on ? EditorView.lineWrapping : []),
        language.of([]),
        search({ top: true, createPanel: () => ({ dom: find.element, top: true }) }),
        keymap.of([
            { key: 'Mod-f', run: openFind },
            { key: 'F3', run: findNext, shift: findPrevious, preventDefault: true },
            { key: 'Alt-z', run: toggleWrap },
            { key: 'Escape', run: () => (find.isOpen ? (find.close() ?? true) : false) },
            { key: 'ArrowLeft', run: () => stepBy(-1) },
            { key: 'ArrowRight', run: () => stepBy(1) },
            ...foldKeymap,
            ...defaultKeymap.filter(({ key }) => key !== 'Backspace'), // leads back to the list
        ]),
        EditorView.updateListener.of(update => {
            if (update.selectionSet) showPosition();
        }),
    ];
    if (coloured)
        extensions.push(syntaxHighlighting(colours), codeFolding(), foldGutter({ openText: '⌄', closedText: '›' }));

    const sheet = el('div', { class: 'sheet enter text-sheet' });
    const editor = new EditorView({ state: EditorState.create({ doc: text, extensions }), parent: sheet });
    view.signal.addEventListener('abort', () => editor.destroy(), { once: true });

    const showPosition = () => {
        const at = editor.state.selection.main.head;
        const line = editor.state.doc.lineAt(at);
        position.textContent = `Line ${line.number.toLocaleString('en')}, column ${at - line.from + 1}`;
    };
    const lines = editor.state.doc.lines;
    const kindName = el('span', {}, coloured ? (description?.name ?? 'Plain text') : 'Too large for colours');
    sheet.append(
        el(
            'div',
            { class: 'foot' },
            position,
            el('span', { class: 'grow' }),
            kindName,
            el('span', {}, encoding),
            el('span', {}, /\r\n/.test(text.slice(0, 65536)) ? 'CRLF' : 'LF'),
            el('span', {}, lines === 1 ? '1 line' : `${lines.toLocaleString('en')} lines`),
        ),
    );
    showPosition();

    const wrapButton = iconButton('wrap', 'Wrap lines (Alt+Z)', () => void toggleWrap());
    wrapButton.classList.toggle('on', wrapState.on);
    wrapButton.setAttribute('aria-pressed', String(wrapState.on));
    const findButton = iconButton('search', 'Find (Ctrl+F)', () => void (find.isOpen ? find.close() : openFind()));
    view.chrome.tools(wrapButton, findButton);
    host.append(sheet);
    editor.focus();

    document.addEventListener(
        'keydown',
        event => {
            if (event.defaultPrevented || !event.ctrlKey || event.key.toLowerCase() !== 'f') return;
            event.preventDefault();
            openFind();
        },
        { signal: view.signal },
    );

    if (coloured && description) {
        // The text is already readable; a grammar that fails to load only costs the colours.
        description.load().then(
            support => !view.signal.aborted && editor.dispatch({ effects: language.reconfigure(support) }),
            () => (kindName.textContent = 'Plain text'),
        );
    }
}

/** While typing, the match nearest after the start of the selection is kept instead of jumping on to the next one. */
function findFrom(editor: EditorView): void {
    const from = editor.state.selection.main.from;
    editor.dispatch({ selection: { anchor: from } });
    findNext(editor);
}

function countMatches(state: EditorState, text: string): string {
    if (!text || !searchPanelOpen(state)) return '';
    const query = new SearchQuery({ search: text, literal: true });
    const cursor = query.getCursor(state);
    const at = state.selection.main;
    const deadline = performance.now() + COUNT_MILLISECONDS;
    let total = 0;
    let current = 0;
    for (let next = cursor.next(); !next.done; next = cursor.next()) {
        total++;
        if (next.value.from === at.from && next.value.to === at.to) current = total;
        if (total >= COUNT_LIMIT || performance.now() > deadline)
            return current ? `${current} of ${total}+` : `${total}+`;
    }
    if (total === 0) return 'None found';
    return current ? `${current} of ${total}` : `${total}`;
}
