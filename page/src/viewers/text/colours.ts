import { HighlightStyle } from '@codemirror/language';
import { tags as t } from '@lezer/highlight';

export const colours = HighlightStyle.define([
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
