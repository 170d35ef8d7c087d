/** One entry of a listing. */
export interface Entry {
    id: string;
    name: string;
    isDirectory: boolean;
    /** Bytes, or null when unknown. */
    size: number | null;
    /** Milliseconds since 1970, 0 when unknown. */
    modified: number;
    ext: string;
    /** Why the entry cannot be opened. */
    blockedReason?: string;
}

/** One level of a folder or archive. */
export interface Listing {
    token: string;
    name: string;
    kind: 'folder' | 'archive';
    path: string;
    parentId: string | null;
    entries: Entry[];
}

export type ToShell =
    | { type: 'ready' | 'open-dialog' | 'open-folder-dialog' | 'cancel-preview' | 'mac-settings' | 'pick-background' }
    | { type: 'clear-background' | 'min' | 'max' | 'close' | 'default-apps' | 'uninstall' | 'drag' }
    | { type: 'container-open'; token: string; id: string }
    | { type: 'container-up' | 'container-refresh'; token: string }
    | { type: 'clipboard-copy'; text: string; copyRequestId: number }
    | { type: 'open-sample'; name: string }
    // Only to a shell that has named them in "features".
    | {
          type:
              | 'open-with'
              | 'show-in-folder'
              | 'copy-path'
              | 'print'
              | 'reload'
              | 'neighbours'
              | 'go-back'
              | 'go-forward';
      }
    | { type: 'clear-recent' }
    | { type: 'keep-recent'; keep: boolean }
    | { type: 'open-recent'; id: string }
    | { type: 'file-digest'; digestRequestId: number }
    | { type: 'transcode-media'; url: string; isAudio: boolean; name: string };

export type Init = {
    type: 'init';
    maximized: boolean;
    platform: string;
    showDefaultPrompt: boolean;
    office: 'libreoffice' | 'quicklook';
};
export type Busy = { type: 'busy'; name: string; requestId: number; containerToken?: string };
export type OpenFile = {
    type: 'open';
    url: string;
    name: string;
    ext: string;
    originalExt: string;
    size: number;
    requestId: number;
    kind?: 'text' | 'pages' | 'slides';
    containerToken?: string;
};
export type OpenContainer = {
    type: 'open';
    kind: 'container';
    name: string;
    container: Listing;
    requestId: number;
    containerToken?: string;
};
export type Failure = { type: 'error'; message: string; requestId: number; name?: string; containerToken?: string };
export type NativePreview = { type: 'native-preview'; name: string; requestId: number; containerToken?: string };

/** What a shell can do beyond the messages that every shell knows. */
export type Feature =
    | 'open-with'
    | 'show-in-folder'
    | 'copy-path'
    | 'print'
    | 'reload'
    | 'neighbours'
    | 'history'
    | 'recent'
    | 'digest';

export interface RecentFile {
    id: string;
    name: string;
}

export type FromShell =
    | Init
    | Busy
    | OpenFile
    | OpenContainer
    | Failure
    | NativePreview
    | { type: 'clipboard-result'; success: boolean; copyRequestId: unknown }
    | { type: 'state'; maximized: boolean }
    | { type: 'active'; value: boolean }
    | { type: 'features'; names: string[] }
    | { type: 'recent'; keep: boolean; files: RecentFile[] }
    | { type: 'neighbours'; container: Listing; id: string; requestId: number }
    | { type: 'file-changed'; requestId: number }
    | { type: 'file-digest'; digestRequestId: number; sha256: string | null };

/** The appearance as the shell hands it over. */
export interface PlatformPreferences {
    airOutline: boolean;
    showZoom: boolean;
    bgColor: string;
    bgMode: 'color' | 'photo';
    bgPreset: string;
    bgCustomUrl: string;
    /** 0 to 100. */
    bgAlpha: number;
    /** 0 to 100. */
    bgBlur: number;
    winBlur: boolean;
}

interface Host {
    webkit?: { messageHandlers?: { quillMere?: { postMessage(message: ToShell): void } } };
    Quillmere?: {
        receive(message: FromShell): void;
        applyPlatformPreferences(prefs: Partial<PlatformPreferences>): void;
    };
}
const host = globalThis as unknown as Host;

/** Posts to the shell; without a shell (the page opened by itself) nothing happens. */
export function post(message: ToShell): void {
    host.webkit?.messageHandlers?.quillMere?.postMessage(message);
}

/** Puts up the two entry points that the shell calls. */
export function connect(entryPoints: NonNullable<Host['Quillmere']>): void {
    host.Quillmere = entryPoints;
}
