import { findNext, SearchQuery, searchPanelOpen } from '@codemirror/search';
import type { EditorState } from '@codemirror/state';
import type { EditorView } from '@codemirror/view';
import type { FindOptions } from '../shared/findbar';

const COUNT_LIMIT = 1000;
const COUNT_MILLISECONDS = 40;

export const queryOf = (text: string, { matchCase, wholeWord }: FindOptions): SearchQuery =>
    new SearchQuery({ search: text, literal: true, caseSensitive: matchCase, wholeWord });

/** While typing, the match nearest after the start of the selection is kept instead of jumping on to the next one. */
export function findFrom(editor: EditorView): void {
    editor.dispatch({ selection: { anchor: editor.state.selection.main.from } });
    findNext(editor);
}

/** "3 of 12"; counting stops where it would be felt. */
export function countMatches(state: EditorState, text: string, options: FindOptions): string {
    if (!text || !searchPanelOpen(state)) return '';
    const cursor = queryOf(text, options).getCursor(state);
    const at = state.selection.main;
    const deadline = performance.now() + COUNT_MILLISECONDS;
    let total = 0;
    let current = 0;
    for (let next = cursor.next(); !next.done; next = cursor.next()) {
        total++;
        if (next.value.from === at.from && next.value.to === at.to) current = total;
        if (total >= COUNT_LIMIT || performance.now() > deadline) {
            return current ? `${current} of ${total}+` : `${total}+`;
        }
    }
    if (total === 0) return 'None found';
    return current ? `${current} of ${total}` : `${total}`;
}
