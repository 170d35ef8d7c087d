#pragma once

namespace quillmere::messages {

/// Every sentence that browsing folders and archives may say, each once. They live as long as the program, so an entry
/// keeps its blocking reason as a plain pointer.

inline constexpr const char* sessionExpired = "This folder session expired. Open the folder or archive again.";
inline constexpr const char* notAContainer = "Choose a folder or a supported archive.";
inline constexpr const char* nestedTooDeep = "Nested archives are limited to eight levels.";
inline constexpr const char* archiveChanged = "The archive changed. Open it again to refresh its contents.";
inline constexpr const char* tookTooLong = "This archive took too long to read. The operation was stopped.";

inline constexpr const char* linksOutside = "Links outside the selected folder are not opened.";
inline constexpr const char* folderTooLarge = "This folder has more than 10,000 items. Open a smaller subfolder.";

inline constexpr const char* readerNotCreated = "The archive reader could not be created.";
inline constexpr const char* readFailurePrefix = "The archive could not be read: ";
inline constexpr const char* corruptOrUnsupported = "The archive is corrupt or this compression method is unsupported.";
inline constexpr const char* encryptedArchive =
    "This archive is encrypted. Password-protected archives cannot be previewed.";
inline constexpr const char* undecodableName = "An archive filename could not be decoded.";
inline constexpr const char* unsafeOrUnsupportedPath = "The archive contains an unsafe or unsupported entry path.";
inline constexpr const char* unsafePath = "The archive contains an unsafe entry path.";
inline constexpr const char* archiveTooLarge = "Archives larger than 1 GB cannot be browsed.";
inline constexpr const char* tooManyEntries = "This archive has more than 10,000 entries.";
inline constexpr const char* duplicatePaths =
    "This archive contains duplicate entry paths and cannot be safely browsed.";
inline constexpr const char* unknownSize = "This archive contains an entry with an unknown size.";
inline constexpr const char* expandsTooFar = "The archive expands beyond the 2 GB preview limit.";
inline constexpr const char* expansionRatio = "This archive's expansion ratio exceeds the safe preview limit.";
inline constexpr const char* conflictingPaths = "This archive contains conflicting file and folder paths.";
inline constexpr const char* crossesFilePath = "An archive entry crosses a file path.";
inline constexpr const char* tooManyFolders = "This archive has too many nested folders.";

inline constexpr const char* itemGone = "This item is no longer available. Refresh the folder.";
inline constexpr const char* itemReplaced = "This item was removed or replaced. Refresh the folder.";
inline constexpr const char* entryGone = "This entry is no longer present in the archive.";
inline constexpr const char* entryChanged = "This archive entry changed or cannot be safely opened.";
inline constexpr const char* cacheNotCreated = "The preview cache could not be created.";
inline constexpr const char* entryTooLong = "The archive entry exceeded its declared size or the preview limit.";
inline constexpr const char* entryTruncated = "The archive entry is truncated or corrupt.";

// Reasons for which a listed entry is blocked.
inline constexpr const char* blockedUnavailable = "This item is unavailable or access was denied.";
inline constexpr const char* blockedLink = "Symbolic links are not opened from the folder browser.";
inline constexpr const char* blockedSpecial = "This item is not a regular file.";
inline constexpr const char* blockedEncrypted =
    "This entry is encrypted. Password-protected files cannot be previewed.";
inline constexpr const char* blockedArchiveLink = "Archive links are not opened.";
inline constexpr const char* blockedArchiveSpecial = "This archive item is not a regular file.";
inline constexpr const char* blockedTooLarge = "This file exceeds the 256 MB archive preview limit.";

} // namespace quillmere::messages
