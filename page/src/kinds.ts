/** What a file is called and looks like in a list, judged by its extension. */
export interface Kind {
    label: string;
    /** Symbol of the sprite. */
    icon: string;
    /** Colour class of the symbol; empty for plain ink. */
    family: string;
}

const FOLDER: Kind = { label: 'Folder', icon: 'folder', family: 'folder' };
const BLOCKED: Kind = { label: 'File', icon: 'file', family: '' };

// icon, colour family, then "label: extensions" by line
const TABLE: [icon: string, family: string, kinds: string][] = [
    [
        'pdf',
        'pdf',
        `PDF document: pdf
        PostScript document: ps eps`,
    ],
    [
        'doc',
        'doc',
        `Word document: doc docx docm
        Word template: dot dotx dotm
        Pages document: pages
        OpenDocument text: odt ott fodt
        Rich text: rtf
        Text document: wpd wps`,
    ],
    [
        'slides',
        'doc',
        `Presentation: ppt pptx pptm pps ppsx ppsm
        Presentation template: pot potx potm
        Keynote presentation: key
        OpenDocument presentation: odp otp fodp`,
    ],
    [
        'table',
        'table',
        `Spreadsheet: xls xlsx xlsm xlsb ods numbers
        Comma-separated table: csv
        Tab-separated table: tsv`,
    ],
    [
        'image',
        'image',
        `PNG image: png apng
        JPEG image: jpg jpeg jfif
        GIF image: gif
        WebP image: webp
        AVIF image: avif
        SVG drawing: svg
        Bitmap image: bmp
        Icon: ico icns
        TIFF image: tif tiff
        HEIF image: heic heif
        JPEG 2000 image: jp2 j2k
        Photoshop image: psd
        Camera image: raw dng cr2 nef arw`,
    ],
    [
        'audio',
        'sound',
        `MP3 sound: mp3
        MPEG-4 sound: m4a
        FLAC sound: flac
        Ogg sound: ogg oga opus
        Wave sound: wav
        AAC sound: aac
        Sound: wma ac3 eac3 amr awb 3ga aif aiff mid midi`,
    ],
    [
        'video',
        'video',
        `MPEG-4 video: mp4 m4v
        WebM video: webm
        Matroska video: mkv
        QuickTime video: mov
        Ogg video: ogv
        Windows video: wmv asf avi
        MPEG video: mpg mpeg mpe m1v m2v mts m2ts vob
        Video: dv divx flv rm rmvb 3gp 3g2`,
    ],
    [
        'archive',
        'archive',
        `Zip archive: zip
        7-Zip archive: 7z
        RAR archive: rar
        Tar archive: tar tgz tbz tbz2 txz
        Compressed file: gz gzip bz2 bzip2 xz
        Cabinet: cab
        Archive: cpio
        Disk image: iso
        Comic book: cbz cbr cb7 cbt
        Java archive: jar war ear
        Application package: apk ipa
        Extension package: xpi vsix
        Package: nupkg whl`,
    ],
    [
        'text',
        '',
        `Plain text: txt text
        Markdown text: md markdown
        Log: log
        Subtitles: srt vtt
        Text: rst adoc tex bib`,
    ],
    [
        'code',
        'code',
        `JavaScript source: js mjs cjs jsx
        TypeScript source: ts tsx cts
        Python source: py pyw
        C source: c h
        C++ source: cc cpp cxx hh hpp hxx
        C# source: cs
        Objective-C source: m mm
        Java source: java
        Kotlin source: kt kts
        Swift source: swift
        Rust source: rs
        Go source: go
        PHP source: php
        Ruby source: rb
        Perl source: pl pm
        Lua source: lua
        R source: r
        Shell script: sh bash zsh fish
        Batch script: bat cmd ps1
        SQL script: sql
        HTML page: html htm xhtml
        Style sheet: css scss sass less
        XML document: xml xsl xsd plist
        JSON data: json json5 jsonl ndjson geojson
        YAML data: yaml yml
        Configuration: toml ini cfg conf env properties
        Patch: diff patch
        CMake script: cmake`,
    ],
    ['cube', 'cube', `3D model: glb gltf obj stl ply 3mf fbx`],
    [
        'font',
        'doc',
        `TrueType font: ttf
        OpenType font: otf
        Web font: woff woff2`,
    ],
    ['mail', 'doc', `E-mail message: eml msg`],
    [
        'database',
        'table',
        `SQLite database: sqlite sqlite3 db
        Parquet table: parquet`,
    ],
    ['book', 'doc', `E-book: epub mobi`],
    ['notebook', 'code', `Notebook: ipynb`],
];

const KINDS = new Map<string, Kind>();
for (const [icon, family, kinds] of TABLE) {
    for (const line of kinds.split('\n')) {
        const [label = '', extensions = ''] = line.split(':');
        for (const ext of extensions.trim().split(/\s+/)) KINDS.set(ext, { label: label.trim(), icon, family });
    }
}

export const extensionOf = (name: string): string => {
    const dot = name.lastIndexOf('.');
    return dot > 0 ? name.slice(dot + 1).toLowerCase() : '';
};

export function kindOfExtension(ext: string): Kind {
    return (
        KINDS.get(ext) ?? {
            label: ext && ext.length <= 8 ? `${ext.toUpperCase()} file` : 'File',
            icon: 'file',
            family: '',
        }
    );
}

export function kindOfEntry(entry: { isDirectory: boolean; ext: string; blockedReason?: string }): Kind {
    if (entry.blockedReason) return BLOCKED;
    return entry.isDirectory ? FOLDER : kindOfExtension(entry.ext);
}

/** Whether opening the file leads to a list instead of a document. */
export const isArchive = (ext: string): boolean => KINDS.get(ext)?.family === 'archive';

/** Extensions that are text whatever the bytes say; saves the look at the head. */
export const isTextual = (ext: string): boolean => ['text', 'code'].includes(KINDS.get(ext)?.icon ?? '');
