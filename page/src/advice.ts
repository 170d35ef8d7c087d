/**
 * What the user can do about a failure, by the sentence that tells it. Sentences are compared whole, or by the fixed beginning of
 * those that go on with words of their own; a file's name in a sentence therefore never chooses the advice.
 */
const MOVED = 'Check that it has not been moved, renamed or locked, then open it again.';
const PASSWORD = 'Unpack it with a program that asks for the password, then open the file.';
const UNPACK = 'Unpack it with another program, then open what you need.';
const DAMAGED = 'It may be damaged or made to do harm. Ask for a new copy from where it came from.';
const LATER = 'Try again when the computer is less busy. The original was not changed.';
const ELSEWHERE = 'Open the file in another program, or choose a different copy. The original was not changed.';
const PLAYER = 'Open the file in another player, or choose a different copy. The original was not changed.';
const FFMPEG = 'Install FFmpeg to play files of this kind here, or open the file in another player.';
const SPACE = 'Make room on the disk that holds your home folder, then open it again.';
/** The sentence says itself what to do. */
const SAID = '';

export const ADVICE: Readonly<Record<string, string>> = {
    'This folder session expired. Open the folder or archive again.': SAID,
    'Choose a folder or a supported archive.': SAID,
    'Nested archives are limited to eight levels.': UNPACK,
    'The archive changed. Open it again to refresh its contents.': SAID,
    'This archive took too long to read. The operation was stopped.': LATER,
    'Links outside the selected folder are not opened.': ELSEWHERE,
    'This folder has more than 10,000 items. Open a smaller subfolder.': SAID,
    'The archive reader could not be created.': LATER,
    'The archive is corrupt or this compression method is unsupported.': DAMAGED,
    'This archive is encrypted. Password-protected archives cannot be previewed.': PASSWORD,
    'An archive filename could not be decoded.': UNPACK,
    'The archive contains an unsafe or unsupported entry path.': DAMAGED,
    'The archive contains an unsafe entry path.': DAMAGED,
    'Archives larger than 1 GB cannot be browsed.': UNPACK,
    'This archive has more than 10,000 entries.': UNPACK,
    'This archive contains duplicate entry paths and cannot be safely browsed.': DAMAGED,
    'This archive contains an entry with an unknown size.': UNPACK,
    'The archive expands beyond the 2 GB preview limit.': UNPACK,
    "This archive's expansion ratio exceeds the safe preview limit.": DAMAGED,
    'This archive contains conflicting file and folder paths.': DAMAGED,
    'An archive entry crosses a file path.': DAMAGED,
    'This archive has too many nested folders.': UNPACK,
    'This item is no longer available. Refresh the folder.': SAID,
    'This item was removed or replaced. Refresh the folder.': SAID,
    'This entry is no longer present in the archive.': MOVED,
    'This archive entry changed or cannot be safely opened.': MOVED,
    'The preview cache could not be created.': SPACE,
    'The archive entry exceeded its declared size or the preview limit.': DAMAGED,
    'The archive entry is truncated or corrupt.': DAMAGED,
    'This item is unavailable or access was denied.': MOVED,
    'Symbolic links are not opened from the folder browser.': ELSEWHERE,
    'This item is not a regular file.': ELSEWHERE,
    'This entry is encrypted. Password-protected files cannot be previewed.': PASSWORD,
    'Archive links are not opened.': UNPACK,
    'This archive item is not a regular file.': UNPACK,
    'This file exceeds the 256 MB archive preview limit.': UNPACK,
    'The selected item no longer exists or access was denied.': MOVED,
    'Select an item to open.': SAID,
    'This media codec could not be played after conversion.': PLAYER,
    'This media codec is unavailable on this Mac. Optional FFmpeg support can open additional legacy codecs.': FFMPEG,
    'File conversion timed out.': LATER,
    'The file converter could not open this document.': ELSEWHERE,
    'The image could not be decoded by macOS.': ELSEWHERE,
    'The requested local file is unavailable.': MOVED,
    'There is not enough memory to open this item.': LATER,
    'This item could not be opened.': MOVED,
    'The file could not be read. It may have been moved or changed.': MOVED,
    'The file changed while it was being read. Open it again.': SAID,
};

/** Sentences that go on with what the system or a program says. */
export const ADVICE_BY_BEGINNING: readonly (readonly [string, string])[] = [['The archive could not be read: ', MOVED]];

export const CANCELLED = 'Preview cancelled.';
export const SESSION_EXPIRED = 'This folder session expired. Open the folder or archive again.';

export function adviceFor(message: string): string {
    const whole = Object.hasOwn(ADVICE, message) ? ADVICE[message] : undefined;
    return whole ?? ADVICE_BY_BEGINNING.find(([beginning]) => message.startsWith(beginning))?.[1] ?? ELSEWHERE;
}
