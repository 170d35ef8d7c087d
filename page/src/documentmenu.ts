import type { OpenFile } from './bridge';
import type { MenuGroups } from './menu';
import { labelOf, type ViewerName, waysToShow } from './registry';

interface Shown {
    file: OpenFile | undefined;
    /** The viewer that stands; none on an error card. */
    shown: ViewerName | null;
    /** The viewer that the file would get by itself. */
    chosen: ViewerName;
    /** What the shell can do with the file outside of the window. */
    out: MenuGroups[number];
    hasPath: boolean;
}

interface Actions {
    showAs(way: ViewerName): void;
    copyPath(): void;
    reload(): void;
    help(): void;
}

/** The ways of showing what stands, the ways out of it, and what works everywhere. */
export function documentMenu({ file, shown, chosen, out, hasPath }: Shown, actions: Actions): MenuGroups {
    const ways = file ? waysToShow(file, chosen) : [];
    const copyPath = hasPath ? [{ label: 'Copy path', run: actions.copyPath }] : [];
    return [
        ways.map(way => ({
            label: `Show as ${labelOf(way).toLowerCase()}`,
            checked: way === shown,
            run: () => actions.showAs(way),
        })),
        file ? [...out, ...copyPath] : copyPath,
        [
            ...(file ? [{ label: 'Reload', keys: 'F5', run: actions.reload }] : []),
            { label: 'Keys', keys: 'F1', run: actions.help },
        ],
    ];
}
