// @vitest-environment happy-dom
import { expect, test } from 'vitest';
import { guardLinks, stripAddresses } from './links';

const SVG = 'http://www.w3.org/2000/svg',
    XLINK = 'http://www.w3.org/1999/xlink',
    MATH = 'http://www.w3.org/1998/Math/MathML';

function element(
    namespace: string,
    name: string,
    attribute: string,
    value: string,
    attributeNamespace: string | null = null,
) {
    const made = document.createElementNS(namespace, name);
    made.setAttributeNS(attributeNamespace, attribute, value);
    made.textContent = 'x';
    return made;
}

const TRAPS: [string, () => Element, boolean][] = [
    ['math', () => element(MATH, 'math', 'href', 'frame.html'), false],
    ['a part of math', () => element(MATH, 'mi', 'href', 'frame.html'), false],
    ['math, the old way', () => element(MATH, 'mi', 'xlink:href', 'frame.html', XLINK), false],
    ['svg use', () => element(SVG, 'use', 'xlink:href', 'https://example.org/a.svg#b', XLINK), false],
    ['svg use of its own part', () => element(SVG, 'use', 'href', '#part'), true],
    ['area', () => element('http://www.w3.org/1999/xhtml', 'area', 'href', 'frame.html'), false],
    ['a', () => element('http://www.w3.org/1999/xhtml', 'a', 'href', 'frame.html'), true],
    ['svg a', () => element(SVG, 'a', 'xlink:href', 'frame.html', XLINK), true],
];

test.each(TRAPS)('the address of %s', (_, make, stays) => {
    const root = document.createElement('div');
    root.append(make());
    stripAddresses(root);
    expect(
        [...root.firstElementChild!.attributes].some(
            ({ localName, name }) => localName === 'href' || name === 'xlink:href',
        ),
    ).toBe(stays);
});

test.each(TRAPS)('a click inside %s goes nowhere, with any button', (_, make) => {
    const root = document.createElement('div'),
        link = make(),
        inside = document.createElement('b');
    link.append(inside);
    root.append(link);
    const told: string[] = [];
    guardLinks(root, address => told.push(address));
    for (const type of ['click', 'auxclick']) {
        const event = new MouseEvent(type, { bubbles: true, cancelable: true, button: type === 'click' ? 0 : 1 });
        inside.dispatchEvent(event);
        expect([type, event.defaultPrevented]).toEqual([type, true]);
    }
    expect(told.every(address => !address.startsWith('#'))).toBe(true);
});
