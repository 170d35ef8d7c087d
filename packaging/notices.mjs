// node notices.mjs PAGE OUT: writes the licences of every package that the built page may contain: what the page depends
// on, directly or not, as far as it is installed for this system. Ends with an error when a package
// tells none.
import { existsSync, readFileSync, readdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';

const [page, out] = process.argv.slice(2);
const lock = JSON.parse(readFileSync(join(page, 'package-lock.json'), 'utf8'));
// Small packages name the MIT licence without its text, which is ours too.
const mit = readFileSync(join(page, '../LICENSE'), 'utf8').trim();
const texts = new Map(); // text of a licence → the packages under it
const named = [];

for (const [folder, entry] of Object.entries(lock.packages)) {
    // Programs for other systems, and those that only the tools use, are not in the bundle.
    if (!folder || entry.dev || entry.optional || entry.devOptional) continue;
    const manifest = JSON.parse(readFileSync(join(page, folder, 'package.json'), 'utf8'));
    const name = `${manifest.name} ${manifest.version}`;
    const files = readdirSync(join(page, folder)).filter((file) => /^(licen[cs]e|copying|notice)/i.test(file)).sort();
    const licence = typeof manifest.license === 'string' ? manifest.license : entry.license;
    if (!licence) throw new Error(`${name} tells no licence.`);
    named.push({ name, licence, from: manifest.repository?.url ?? manifest.homepage ?? '' });
    const author = typeof manifest.author === 'string' ? manifest.author : manifest.author?.name;
    const text = files.map((file) => readFileSync(join(page, folder, file), 'utf8').replace(/\r\n/g, '\n').trim()).join('\n\n')
        || (licence === 'MIT' && author ? mit.replace(/^Copyright.*$/m, `Copyright (c) ${author}`) : '');
    if (!text) throw new Error(`${name} holds no licence text.`);
    texts.set(text, [...(texts.get(text) ?? []), name]);
}

// Decoders and fonts that come inside a package have licences beside them.
const reader = join(page, 'node_modules/pdfjs-dist');
for (const folder of ['cmaps', 'iccs', 'standard_fonts', 'wasm'].map((name) => join(reader, name)).filter(existsSync)) {
    for (const file of readdirSync(folder).filter((file) => /^licen[cs]e/i.test(file)).sort()) {
        const text = readFileSync(join(folder, file), 'utf8').replace(/\r\n/g, '\n').trim();
        texts.set(text, [...(texts.get(text) ?? []), `pdfjs-dist/${folder.split('/').at(-1)} (${file})`]);
    }
}

const line = '-'.repeat(78);
const list = named.map(({ name, licence, from }) => `${name}: ${licence}${from && `\n    ${from}`}`).join('\n');
const body = [...texts].map(([text, packages]) => `${line}\n${packages.join('\n')}\n${line}\n\n${text}\n`).join('\n');
writeFileSync(out, `The page of Quillmere contains parts of these packages.\n\n${list}\n\n${body}`);
