import { codeFolding, foldGutter, foldKeymap, LanguageDescription, syntaxHighlighting } from '@codemirror/language';
import { languages } from '@codemirror/language-data';
import { closeSearchPanel, findNext, findPrevious, openSearchPanel, search, setSearchQuery } from '@codemirror/search';
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
import { detectEncoding, encodingOf } from '../../decode';
import type { Doc } from '../../doc';
import { el, iconButton } from '../../dom';
import { formatCount } from '../../format';
import type { ViewContext } from '../../view';
import { encodingButton } from '../shared/encodings';
import { FindBar } from '../shared/findbar';
import { setPressed } from '../shared/pressed';
import { colours } from './colours';
import { countMatches, findFrom, queryOf } from './find';
import { readingKeymap } from './readingkeys';
import './text.css';

const HIGHLIGHT_LIMIT = 8 * 1024 * 1024;
const LONGEST_FIND = 200;
const PROSE = new Set(['', 'txt', 'text', 'md', 'markdown', 'rst', 'tex', 'srt', 'vtt', 'eml', 'rtf']);

export async function show(host: HTMLElement, doc: Doc, view: ViewContext): Promise<void> {
    const bytes = await doc.bytes(view.signal);
    view.signal.throwIfAborted();
    new TextView(host, doc, view, bytes).start();
}

/** The whole text in an editor that only reads. */
class TextView {
    private readonly language = new Compartment();
    private readonly wrapping = new Compartment();
    private readonly position = el('span', {});
    private readonly facts = el('span', {});
    private readonly kindName = el('span', {});
    private readonly wrapButton = iconButton('wrap', 'Wrap lines (Alt+Z)', () => this.toggleWrap());
    private readonly sheet = el('div', { class: 'sheet enter text-sheet' });
    private readonly find: FindBar;
    private readonly editor: EditorView;
    private readonly description: LanguageDescription | null;
    private label: string;
    private wrapped: boolean;

    constructor(
        private readonly host: HTMLElement,
        private readonly doc: Doc,
        private readonly view: ViewContext,
        private readonly bytes: Uint8Array,
    ) {
        this.label = detectEncoding(bytes, true).label;
        this.wrapped = PROSE.has(doc.ext);
        this.description = LanguageDescription.matchFilename(languages, doc.name);
        this.find = new FindBar(
            {
                query: (text, options) => {
                    this.editor.dispatch({ effects: setSearchQuery.of(queryOf(text, options)) });
                    if (text) findFrom(this.editor);
                    this.report();
                },
                step: direction => {
                    (direction > 0 ? findNext : findPrevious)(this.editor);
                    this.report();
                },
                opened: () => void openSearchPanel(this.editor),
                closed: () => {
                    closeSearchPanel(this.editor);
                    this.editor.focus();
                },
            },
            () => this.findSelection(),
        );
        this.editor = new EditorView({ state: this.state(), parent: this.sheet });
    }

    start(): void {
        const { view, editor } = this;
        view.signal.addEventListener('abort', () => editor.destroy(), { once: true });
        const encoding = encodingButton(this.label, label => this.decodeAs(label));
        const grow = el('span', { class: 'grow' });
        this.sheet.append(el('div', { class: 'foot' }, this.position, grow, this.kindName, encoding, this.facts));
        setPressed(this.wrapButton, this.wrapped);
        view.chrome.tools(this.wrapButton, this.find.button);
        view.zoomable(this.sheet);
        view.keys([...this.find.keys, { keys: 'Alt+Z', label: 'Wrap lines', run: () => this.toggleWrap() }]);
        this.host.append(this.sheet);
        this.describe();
        editor.focus();
        void this.colour();
    }

    private get text(): string {
        return new TextDecoder(this.label).decode(this.bytes);
    }

    private get isColoured(): boolean {
        return this.bytes.length <= HIGHLIGHT_LIMIT;
    }

    private state(): EditorState {
        const { doc, find } = this;
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
            this.wrapping.of(this.wrapped ? EditorView.lineWrapping : []),
            this.language.of([]),
            search({ top: true, createPanel: () => ({ dom: find.element, top: true }) }),
            keymap.of([
                { key: 'F3', run: findNext, shift: findPrevious, preventDefault: true },
                // Among a container's documents the plain arrows step on; there is nothing to edit at the caret.
                { key: 'ArrowLeft', run: () => this.stepBy(-1) },
                { key: 'ArrowRight', run: () => this.stepBy(1) },
                ...foldKeymap,
                ...readingKeymap,
            ]),
            EditorView.updateListener.of(update => {
                if (update.selectionSet) this.showPosition();
            }),
        ];
        const colouring = [syntaxHighlighting(colours), codeFolding(), foldGutter({ openText: '⌄', closedText: '›' })];
        return EditorState.create({
            doc: this.text,
            extensions: this.isColoured ? [...extensions, colouring] : extensions,
        });
    }

    private stepBy(delta: number): boolean {
        const { neighbours } = this.view;
        if (!neighbours || !this.editor.state.selection.main.empty) return false;
        neighbours.go(delta);
        return true;
    }

    private findSelection(): string | undefined {
        const { state } = this.editor;
        const selected = state.sliceDoc(state.selection.main.from, state.selection.main.to);
        return selected.length <= LONGEST_FIND && !selected.includes('\n') ? selected : undefined;
    }

    private report(): void {
        this.find.report(countMatches(this.editor.state, this.find.text, this.find.options));
    }

    private toggleWrap(): void {
        this.wrapped = !this.wrapped;
        setPressed(this.wrapButton, this.wrapped);
        this.editor.dispatch({ effects: this.wrapping.reconfigure(this.wrapped ? EditorView.lineWrapping : []) });
    }

    private decodeAs(label: string): void {
        this.label = label;
        this.find.close();
        this.editor.setState(this.state());
        this.describe();
        void this.colour();
        this.editor.focus();
    }

    private showPosition(): void {
        const at = this.editor.state.selection.main.head;
        const line = this.editor.state.doc.lineAt(at);
        this.position.textContent = `Line ${line.number.toLocaleString('en')}, column ${at - line.from + 1}`;
    }

    private describe(): void {
        const { doc } = this.editor.state,
            { text } = this;
        const ends = /\r\n/.test(text.slice(0, 65536)) ? 'CRLF' : 'LF';
        this.kindName.textContent = this.isColoured
            ? (this.description?.name ?? 'Plain text')
            : 'Too large for colours';
        this.facts.textContent = `${ends} · ${formatCount(doc.lines, 'line')}`;
        this.view.details([
            ['Lines', doc.lines.toLocaleString('en')],
            ['Words', (text.match(/[\p{L}\p{N}_]+/gu)?.length ?? 0).toLocaleString('en')],
            ['Characters', [...text].length.toLocaleString('en')],
            ['Encoding', encodingOf(this.label).name],
            ['Line ends', ends],
        ]);
        this.showPosition();
    }

    /** The text is readable already; a grammar that fails to load only costs the colours. */
    private async colour(): Promise<void> {
        if (!this.isColoured || !this.description) return;
        try {
            const support = await this.description.load();
            if (!this.view.signal.aborted) this.editor.dispatch({ effects: this.language.reconfigure(support) });
        } catch {
            this.kindName.textContent = 'Plain text';
        }
    }
}
