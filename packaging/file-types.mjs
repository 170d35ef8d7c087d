// file-types.mjs INFO_PLIST OUT: writes the extensions of the property list's document types, each with what such a file is
// called, as the resource that the program asks when a default is chosen. The property list is the one table of both.
import { readFileSync, writeFileSync } from 'node:fs';

const [list, out] = process.argv.slice(2);
const text = readFileSync(list, 'utf8');
const between = (source, key, tag) => {
    const found = new RegExp(`<key>${key}</key>\\s*<${tag}>([^]*?)</${tag}>`).exec(source);
    if (!found) throw new Error(`${list}: a document type has no ${key}`);
    return found[1];
};
const types = {};
for (const entry of text.split('<key>CFBundleTypeName</key>').slice(1)) {
    const name = /^\s*<string>([^<]*)<\/string>/.exec(entry)?.[1];
    if (!name) throw new Error(`${list}: a document type has no name`);
    for (const [, extension] of between(entry, 'CFBundleTypeExtensions', 'array').matchAll(/<string>([^<]*)<\/string>/g)) {
        if (extension in types) throw new Error(`${list}: ${extension} stands in two document types`);
        types[extension] = name;
    }
}
if (Object.keys(types).length === 0) throw new Error(`${list} names no document types`);
writeFileSync(out, `${JSON.stringify(types, null, 1)}\n`);
