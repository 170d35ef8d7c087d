import { readdirSync, readFileSync } from 'node:fs';
import { defineConfig } from 'vitest/config';

// Symbols are referenced as #name within the document, so the sprite has to stand in it from the first paint.
const sprite = {
    name: 'symbol-sprite',
    transformIndexHtml: (html: string) =>
        html.replace('<!-- symbols -->', readFileSync(new URL('src/symbols.svg', import.meta.url), 'utf8').trim()),
};

// The PDF reader asks for character maps, stand-in fonts and decoders by name when a document needs them.
const pdfData = {
    name: 'pdf-data',
    generateBundle(this: { emitFile(file: { type: 'asset'; fileName: string; source: Uint8Array }): unknown }) {
        for (const folder of ['cmaps', 'iccs', 'standard_fonts', 'wasm']) {
            const from = new URL(`node_modules/pdfjs-dist/${folder}/`, import.meta.url);
            for (const name of readdirSync(from)) {
                this.emitFile({
                    type: 'asset',
                    fileName: `pdf/${folder}/${name}`,
                    source: readFileSync(new URL(name, from)),
                });
            }
        }
    },
};

export default defineConfig({
    base: './',
    plugins: [sprite, pdfData],
    worker: { format: 'es' },
    build: {
        target: 'safari18',
        modulePreload: { polyfill: false },
        assetsInlineLimit: 0,
        chunkSizeWarningLimit: 2000,
    },
    test: { include: ['src/**/*.test.ts'], environment: 'node', testTimeout: 60_000 },
});
