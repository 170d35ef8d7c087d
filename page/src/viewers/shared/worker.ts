/**
 * Runs one job in a worker of its own. The answer is the promise's; a worker that says more on the way tells `progress`. Whatever
 * the end, and when the view is replaced, the worker is ended.
 */
export function runWorker<Part, Result>(
    worker: Worker,
    job: { message: unknown; transfer: Transferable[] },
    signal: AbortSignal,
    failure: string,
    progress: (part: Part) => void = () => undefined,
): Promise<Result> {
    return new Promise<Result>((resolve, reject) => {
        signal.addEventListener('abort', () => reject(signal.reason), { once: true });
        worker.onerror = () => reject(new Error(failure));
        worker.onmessage = ({ data }: MessageEvent<{ part: Part } | { result: Result } | { error: string }>) => {
            if ('part' in data) progress(data.part);
            else if ('error' in data) reject(new Error(data.error));
            else resolve(data.result);
        };
        worker.postMessage(job.message, job.transfer);
    }).finally(() => worker.terminate());
}
