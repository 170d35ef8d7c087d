import { type Feature, type FromShell, post, type RecentFile, type ToShell } from './bridge';
import type { MenuItem } from './menu';

type Plain =
    | 'open-with'
    | 'show-in-folder'
    | 'copy-path'
    | 'print'
    | 'reload'
    | 'neighbours'
    | 'go-back'
    | 'go-forward';

const NEEDS: Record<Plain, Feature> = {
    'open-with': 'open-with',
    'show-in-folder': 'show-in-folder',
    'copy-path': 'copy-path',
    print: 'print',
    reload: 'reload',
    neighbours: 'neighbours',
    'go-back': 'history',
    'go-forward': 'history',
};

/** What this shell can do beyond the common messages: nothing until it says so, and the page offers only that. */
export class Shell extends EventTarget {
    recent: { keep: boolean; files: readonly RecentFile[] } | null = null;
    private readonly features = new Set<string>();
    private readonly digests = new Map<number, (sha256: string | null) => void>();
    private lastDigest = 0;

    receive(message: Extract<FromShell, { type: 'features' | 'recent' | 'file-digest' }>): void {
        if (message.type === 'features') for (const name of message.names) this.features.add(name);
        else if (message.type === 'recent') this.recent = { keep: message.keep, files: message.files };
        else {
            this.digests.get(message.digestRequestId)?.(message.sha256);
            this.digests.delete(message.digestRequestId);
        }
        this.dispatchEvent(new Event('change'));
    }

    can(type: Plain | 'digest'): boolean {
        return this.features.has(type === 'digest' ? type : NEEDS[type]);
    }

    /** Asks for something that takes no words; false when this shell does not know it. */
    ask(type: Plain): boolean {
        if (!this.can(type)) return false;
        post({ type } as ToShell);
        return true;
    }

    /** The checksum of the shown file; null when it could not be made. */
    digest(): Promise<string | null> {
        const digestRequestId = ++this.lastDigest;
        return new Promise(resolve => {
            this.digests.set(digestRequestId, resolve);
            post({ type: 'file-digest', digestRequestId });
        });
    }

    /** The ways out of a document that this shell offers. */
    menu(): MenuItem[] {
        const items: [Plain, string, string?][] = [
            ['open-with', 'Open with…'],
            ['show-in-folder', 'Show in folder'],
            ['print', 'Print…', 'Ctrl P'],
        ];
        return items
            .filter(([type]) => this.can(type))
            .map(([type, label, keys]) => ({ label, keys, run: () => void this.ask(type) }));
    }
}
