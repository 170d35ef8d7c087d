import type { Entry, Listing, ToShell } from './bridge';
import { crumbsOf } from './path';
import { type Column, type Direction, documentsOf, sortEntries } from './sorting';

/** What a list looked like when it was left. */
export interface Place {
    /** Name of the selected entry: ids of a folder's entries change when it is listed again. */
    name: string;
    scrollTop: number;
}

export interface Level {
    label: string;
    /** Levels above the listed one; null where repeated "up" cannot lead. */
    above: number | null;
}

const PLACES = 200;

/**
 * The page's side of browsing: what is listed, what was opened from it, and how to get back. The shell's session knows
 * one current level; every move is a message, and its answer comes to `arrived`.
 */
export class Browser {
    listing: Listing | null = null;
    /**
     * Token of the session that the current request belongs to; it can be known without its listing after the page was
     * reloaded.
     */
    token: string | null = null;
    column: Column = 'name';
    direction: Direction = 'ascending';
    /** Whether the document in sight was opened for a look only. */
    peeking = false;
    private sorted: Entry[] = [];
    private openedId: string | null = null;
    private rootPath: string | null = null;
    private climbTo: number | null = null;
    private selectNext: string | null = null;
    private readonly places = new Map<string, Place>();

    constructor(private readonly post: (message: ToShell) => void) {}

    /** A new request has begun, in a session or outside of any. */
    begun(token: string | undefined): void {
        this.token = token ?? null;
        if (!token) this.climbTo = null;
    }

    /** The request that was under way came to nothing, so there is no way left to go on. */
    failed(): void {
        this.climbTo = null;
        this.selectNext = null;
    }

    /** Takes a listing; false while it is only a step on the way up to another one. */
    arrived(listing: Listing): boolean {
        const depth = crumbsOf(listing.path).length;
        this.token = listing.token;
        this.listing = listing;
        this.openedId = null;
        this.peeking = false;
        if (listing.parentId === null) this.rootPath = listing.path;
        else if (this.rootPath !== null && !listing.path.startsWith(this.rootPath)) this.rootPath = null;
        if (this.climbTo !== null && depth > this.climbTo && listing.parentId !== null) {
            this.up();
            return false;
        }
        this.climbTo = null;
        this.sort(this.column, this.direction);
        return true;
    }

    /** Takes the level of a document that is shown already, as the entry `id`. */
    adopt(listing: Listing, id: string): void {
        this.token = listing.token;
        this.listing = listing;
        this.rootPath = listing.parentId === null ? listing.path : null;
        this.sort(this.column, this.direction);
        this.openedId = id;
    }

    sort(column: Column, direction: Direction): readonly Entry[] {
        this.column = column;
        this.direction = direction;
        this.sorted = sortEntries(this.listing?.entries ?? [], column, direction);
        return this.sorted;
    }

    get entries(): readonly Entry[] {
        return this.sorted;
    }

    /** The entry that the shown document was opened from. */
    get opened(): Entry | null {
        if (this.openedId === null || this.listing?.token !== this.token) return null;
        return this.sorted.find(entry => entry.id === this.openedId) ?? null;
    }

    open(entry: Entry): void {
        if (!this.listing || entry.blockedReason) return;
        this.openedId = entry.id;
        this.peeking = false;
        this.post({ type: 'container-open', token: this.listing.token, id: entry.id });
    }

    /** Opens an entry for a look: Space leads back. */
    peek(entry: Entry): void {
        this.open(entry);
        this.peeking = this.openedId === entry.id;
    }

    up(): void {
        if (!this.token) return;
        this.selectNext = crumbsOf(this.listing?.path ?? '').at(-1) ?? null;
        this.post({ type: 'container-up', token: this.token });
    }

    /** Lists the current level again: to see what changed, or to come back from a document. */
    refresh(): void {
        if (this.token) this.post({ type: 'container-refresh', token: this.token });
    }

    /** Goes up so many levels, or lists the current one for 0. */
    climb(above: number): void {
        if (above === 0) return this.refresh();
        this.climbTo = crumbsOf(this.listing?.path ?? '').length - above;
        this.up();
    }

    /** The steps of the listed path. Only those from the opened folder or archive down can be reached. */
    get levels(): Level[] {
        const labels = crumbsOf(this.listing?.path ?? '');
        const root = this.rootPath === null ? labels.length : crumbsOf(this.rootPath).length;
        return labels.map((label, i) => ({ label, above: i >= root - 1 ? labels.length - 1 - i : null }));
    }

    /** Where the opened document stands among the documents of its level; null when there is nothing to step to. */
    get position(): { index: number; count: number } | null {
        const { opened } = this;
        if (!opened) return null;
        const documents = documentsOf(this.sorted),
            index = documents.indexOf(opened);
        return index < 0 || documents.length < 2 ? null : { index, count: documents.length };
    }

    step(delta: number): void {
        const at = this.position;
        const next = at && documentsOf(this.sorted)[at.index + delta];
        if (!next) return;
        this.remember({ name: next.name, scrollTop: this.places.get(this.key)?.scrollTop ?? 0 });
        this.open(next);
    }

    remember(place: Place): void {
        this.places.delete(this.key);
        this.places.set(this.key, place);
        const oldest = this.places.keys().next().value;
        if (this.places.size > PLACES && oldest !== undefined) this.places.delete(oldest);
    }

    /** Where the listed level was left; the folder or archive that one has just come up from is the one selected. */
    recall(): Place {
        const place = this.places.get(this.key) ?? { name: '', scrollTop: 0 };
        const cameFrom = this.selectNext;
        this.selectNext = null;
        return cameFrom !== null && this.sorted.some(entry => entry.name === cameFrom)
            ? { ...place, name: cameFrom }
            : place;
    }

    private get key(): string {
        return `${this.listing?.token}\n${this.listing?.path}`;
    }
}
