import { post } from './bridge';

const waiting = new Map<number, (success: boolean) => void>();
let lastId = 0;

/** Puts text on the system's clipboard; the answer says whether that worked. */
export function copyText(text: string): Promise<boolean> {
    const copyRequestId = ++lastId;
    return new Promise(resolve => {
        waiting.set(copyRequestId, resolve);
        post({ type: 'clipboard-copy', text, copyRequestId });
    });
}

export function clipboardAnswered(copyRequestId: unknown, success: boolean): void {
    const resolve = waiting.get(copyRequestId as number);
    waiting.delete(copyRequestId as number);
    resolve?.(success);
}
