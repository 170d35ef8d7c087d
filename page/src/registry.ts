import { looksLikeText } from './decode';
import type { Doc } from './doc';
import type { Viewer } from './view';

export type ViewerName = 'text' | 'largetext' | 'image' | 'pdf' | 'hex' | 'video' | 'audio' | 'docx';

const modules = import.meta.glob<Viewer>('./viewers/{text,largetext,image,pdf,hex,video,audio,docx}.ts');

export const loadViewer = (name: ViewerName): Promise<Viewer> => {
    const load = modules[`./viewers/${name}.ts`];
    return load ? load() : Promise.reject(new Error('There is no viewer for this kind of file.'));
};
export const viewerFor = async (doc: Doc, signal?: AbortSignal): Promise<ViewerName> =>
    looksLikeText(await doc.range(0, 4096, signal)) ? 'text' : 'hex';
