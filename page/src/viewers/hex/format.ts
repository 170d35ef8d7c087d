export function hexOffset(offset: number, size: number): string {
    const digits = Math.max(8, Math.ceil(Math.max(0, size - 1).toString(16).length / 2) * 2);
    return offset.toString(16).toUpperCase().padStart(digits, '0');
}

export function hexByte(value: number): string {
    return value.toString(16).toUpperCase().padStart(2, '0');
}

export function asciiOf(value: number): string {
    return value >= 0x20 && value < 0x7f ? String.fromCharCode(value) : '·';
}

/**
 * "0x1f0", "1f0h" and digits with a letter in them are hexadecimal, plain digits decimal, "50%" a place in the file.
 */
export function parseOffset(text: string, size: number): number | undefined {
    const t = text
        .trim()
        .toLowerCase()
        .replace(/[\s_,]/g, '');
    let value: number;
    if (/^\d+(\.\d+)?%$/.test(t)) value = Math.floor((parseFloat(t) / 100) * size);
    else if (/^0x[0-9a-f]+$/.test(t)) value = parseInt(t.slice(2), 16);
    else if (/^[0-9a-f]+h$/.test(t)) value = parseInt(t.slice(0, -1), 16);
    else if (/^\d+$/.test(t)) value = parseInt(t, 10);
    else if (/^[0-9a-f]+$/.test(t)) value = parseInt(t, 16);
    else return undefined;
    return Math.max(0, Math.min(value, Math.max(0, size - 1)));
}

export interface HexCursor {
    offset: number;
    size: number;
    perRow: number;
    pageRows: number;
}

export function moveCursor(key: string, ctrl: boolean, cursor: HexCursor): number | undefined {
    const { offset, size, perRow, pageRows } = cursor;
    const row = offset - (offset % perRow);
    const targets: Record<string, number> = {
        ArrowLeft: offset - 1,
        ArrowRight: offset + 1,
        ArrowUp: offset - perRow >= 0 ? offset - perRow : offset,
        ArrowDown: offset + perRow < size ? offset + perRow : offset,
        PageUp: Math.max(offset - perRow * pageRows, offset % perRow),
        PageDown: offset + perRow * pageRows,
        Home: ctrl ? 0 : row,
        End: ctrl ? size - 1 : row + perRow - 1,
    };
    const target = targets[key];
    return target === undefined ? undefined : Math.max(0, Math.min(target, size - 1));
}
