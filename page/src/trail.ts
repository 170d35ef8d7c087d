import { el, icon, iconButton, toolbar } from './dom';
import { foldCrumbs } from './path';

// Room for the shadow of the capsule, on both sides.
const PLACE_PADDING = 24;

export interface Crumb {
    label: string;
    /** Absent where the shell cannot go. */
    open?: () => void;
}

export interface TrailSpec {
    crumbs: Crumb[];
    /** Leads one level up or back to the list; absent at the top. */
    up?: { title: string; go: () => void };
    tools: HTMLElement[];
}

/** The path capsule below the title strip, with tools of the place at its right. */
export class Trail {
    readonly element = el('nav', { class: 'trail', 'aria-label': 'Location', hidden: true });
    private spec: TrailSpec | null = null;

    constructor() {
        new ResizeObserver(() => this.fit()).observe(this.element);
    }

    show(spec: TrailSpec | null): void {
        this.spec = spec;
        this.element.hidden = !spec;
        this.element.replaceChildren();
        if (!spec) return;
        this.element.append(el('div', { class: 'place' }), el('span', { class: 'grow' }));
        if (spec.tools.length > 0)
            this.element.append(toolbar(el('div', { class: 'capsule' }, ...spec.tools), 'Folder'));
        this.fit();
    }

    /** Folds the path in the middle until it fits. */
    private fit(): void {
        const place = this.element.firstElementChild as HTMLElement | null,
            spec = this.spec;
        if (!spec || !place) return;
        for (let most = Math.min(spec.crumbs.length, 8); ; most--) {
            const capsule = this.capsule(spec, most);
            place.replaceChildren(capsule);
            if (capsule.offsetWidth <= place.clientWidth - PLACE_PADDING) return;
            if (most <= 2) return capsule.classList.add('tight');
        }
    }

    private capsule(spec: TrailSpec, most: number): HTMLElement {
        const last = spec.crumbs.at(-1);
        const parts = foldCrumbs(spec.crumbs, most).map(crumb => {
            if (!crumb)
                return el(
                    'span',
                    { class: 'crumb gap', title: spec.crumbs.map(({ label }) => label).join(' / ') },
                    '…',
                );
            const here = crumb === last,
                cls = here ? 'crumb here' : 'crumb';
            if (!crumb.open || here)
                return el('span', { class: cls, title: crumb.label, 'aria-current': here && 'location' }, crumb.label);
            return el('button', { class: cls, type: 'button', title: crumb.label, onclick: crumb.open }, crumb.label);
        });
        const up = spec.up && iconButton('arrow-up', spec.up.title, spec.up.go);
        up?.firstElementChild?.classList.add('s');
        const chained = parts.flatMap((part, i) => (i > 0 ? [icon('chevron-right', 's'), part] : [part]));
        return toolbar(
            el('div', { class: 'capsule crumbs' }, up, up && el('span', { class: 'sep' }), ...chained),
            'Path',
        );
    }
}
