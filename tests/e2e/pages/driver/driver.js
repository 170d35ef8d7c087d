// Stands in for the page: runs the steps of an opened "*.steps.js" file and reports as its status.
const messages = [];
const waiting = [];
const result = { run: Math.random().toString(36).slice(2), state: 'starting' };

function publish(extra) {
    Object.assign(result, extra);
    // ASCII only: the status reaches the test through a window property.
    const detail = JSON.stringify(result).replace(/[^ -~]/g, (c) => '\\u' + c.charCodeAt(0).toString(16).padStart(4, '0'));
    window.dispatchEvent(new CustomEvent('page-status', { detail }));
}

function settle() {
    for (const wait of [...waiting]) {
        const found = messages.slice(wait.from).find(wait.test);
        if (found) {
            waiting.splice(waiting.indexOf(wait), 1);
            wait.resolve(found);
        }
    }
}

const api = {
    messages,
    post: (message) => window.webkit.messageHandlers.quillMere.postMessage(message),
    /** The next message of this type after position `from`. */
    wait: (type, from = 0, test = () => true) =>
        new Promise((resolve) => {
            waiting.push({ from, test: (m) => m.type === type && test(m), resolve });
            settle();
        }),
    sleep: (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds)),
    publish,
    /** The outcome of a fetch as plain facts. */
    async fetch(url, options) {
        try {
            const answer = await fetch(url, options);
            const body = new Uint8Array(await answer.arrayBuffer());
            return { status: answer.status, headers: Object.fromEntries(answer.headers), length: body.length, body };
        } catch (error) {
            return { failed: String(error) };
        }
    },
};

async function run(open) {
    publish({ state: 'running', name: open.name });
    try {
        const source = await (await fetch(open.url)).text();
        const steps = new (Object.getPrototypeOf(async function () {}).constructor)('api', 'open', source);
        publish({ state: 'done', value: (await steps(api, open)) ?? null });
    } catch (error) {
        publish({ state: 'failed', error: String(error?.stack ?? error) });
    }
}

/** Of a folder the steps in it are opened, if there are any. */
function enter({ entries, token }) {
    const steps = entries.find((entry) => entry.name.endsWith('.steps.js'));
    if (steps) api.post({ type: 'container-open', token, id: steps.id });
}

/** Reads the head of a file that is not ours to run. */
async function look(open) {
    const { failed, length } = await api.fetch(open.url, open.size > 0 ? { headers: { Range: 'bytes=0-99' } } : {});
    publish({ state: 'message', last: open, fetched: failed ? 'failed' : length });
}

window.Quillmere = {
    receive(message) {
        messages.push(message);
        settle();
        if (message.type === 'open' && message.container) enter(message.container);
        if (message.type === 'open' && String(message.name).endsWith('.steps.js')) run(message);
        else if (message.type === 'open' && message.url && result.state !== 'running') look(message);
        else if (result.state !== 'running' && message.type !== 'active') publish({ state: 'message', last: message });
    },
    applyPlatformPreferences(preferences) {
        messages.push({ type: 'preferences', preferences });
        settle();
    },
};

publish({ state: 'ready', ready: Date.now() });
if (window.webkit?.messageHandlers?.quillMere) api.post({ type: 'ready' });
const named = new URLSearchParams(location.search).get('steps');
if (named) run({ name: named, url: named }); // without a shell: the comparisons of the benchmarks
