/** Links in documents lead nowhere: whatever carries an address, in whichever namespace, is caught before the engine follows it. */

const ADDRESSES = new Set(['href', 'xlink:href', 'action', 'formaction', 'ping']);

function addressOf(element: Element): string | null {
    for (const { localName, name, value } of element.attributes)
        if (localName === 'href' || name === 'xlink:href') return value;
    return null;
}

/** The address under an event, of the innermost element that has one. */
export function addressAt(event: Event): string | null {
    for (const target of event.composedPath()) {
        // A frame's elements are of another world's classes, so the kind of node decides.
        if ((target as Node).nodeType !== 1) continue;
        const address = addressOf(target as Element);
        if (address !== null) return address;
    }
    return null;
}

/** Takes addresses from everything but `a`: those of other elements are links that nobody looks for. */
export function stripAddresses(root: ParentNode): void {
    for (const element of root.querySelectorAll('*')) {
        for (const attribute of [...element.attributes]) {
            const name = attribute.name.toLowerCase();
            if (!ADDRESSES.has(name) && attribute.localName !== 'href') continue;
            const isLink = element.localName === 'a' && (name === 'href' || name === 'xlink:href');
            // A drawing refers to its own parts by a mark.
            const ownPart = element.namespaceURI === 'http://www.w3.org/2000/svg' && attribute.value.startsWith('#');
            if (!isLink && !ownPart) element.removeAttributeNode(attribute);
        }
    }
}

/** Catches clicks with any button, keys' included, on whatever has an address; `told` gets the address. */
export function guardLinks(
    target: Document | HTMLElement,
    told: (address: string) => void,
    signal?: AbortSignal,
): void {
    const follow = (event: Event) => {
        const address = addressAt(event);
        if (address === null) return;
        event.preventDefault();
        if (!address.startsWith('#')) told(address);
    };
    const options = signal ? { signal } : {};
    for (const type of ['click', 'auxclick']) target.addEventListener(type, follow, options);
    // Dragged out and dropped on the window, a link would be opened.
    target.addEventListener('dragstart', event => addressAt(event) !== null && event.preventDefault(), options);
}
