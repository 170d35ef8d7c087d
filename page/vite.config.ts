import { readFileSync } from 'node:fs';
import { defineConfig } from 'vitest/config';

// Symbols are referenced as #name within the document, so the sprite has to stand in it from the first paint.
const sprite = {
    name: 'symbol-sprite',
    transformIndexHtml: (html: string) =>
        html.replace('<!-- symbols -->', readFileSync(new URL('src/symbols.svg', import.meta.url), 'utf8').trim()),
};

export default defineConfig({
    base: './',
    plugins: [sprite],
    worker: { format: 'es' },
    build: {
        target: 'safari18',
        modulePreload: { polyfill: false },
        assetsInlineLimit: 0,
        chunkSizeWarningLimit: 2000,
    },
    test: { include: ['src/**/*.test.ts'], environment: 'node' },
});
