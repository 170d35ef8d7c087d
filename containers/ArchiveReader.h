#pragma once

#include "base/Errors.h"
#include "base/FileDescriptor.h"
#include "base/FileUrl.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace quillmere {

/// What an archive says about one entry, taken over as it stands; nothing here has been judged yet.
struct EntryFacts {
    std::optional<std::string> name; ///< bytes, UTF-8 where the archive allows it
    std::string format;              ///< the reader's name for the archive's format
    uint32_t type = 0;               ///< POSIX file type bits (S_IFREG, S_IFDIR, ...)
    std::optional<int64_t> size;     ///< declared bytes
    int64_t modified = 0;            ///< seconds since 1970, 0 when unknown
    bool encrypted = false;
    bool symbolicLink = false; ///< has a symbolic-link target
    bool hardLink = false;     ///< has a hard-link target

    bool operator==(const EntryFacts&) const = default;
};

/// Whether a single compressed file, not an archive, may open as one entry.
enum class RawFormat { refused, accepted };

/// Called again and again while a reader waits, at least every 50 ms; ends the call by throwing.
using Pulse = std::function<void()>;

struct ArchiveRequest {
    FileDescriptor file; ///< the archive, open for reading at its start
    RawFormat raw = RawFormat::refused;
    std::optional<int64_t> only = {}; ///< 1-based position of the one entry wanted; all entries otherwise
    Pulse pulse = [] {};
};

/// One pass over one archive. Used by one thread; destroying it stops the reading.
class ArchiveReader {
public:
    enum class Outcome { done, end, failed };

    ArchiveReader() = default;
    ArchiveReader(const ArchiveReader&) = delete;
    ArchiveReader& operator=(const ArchiveReader&) = delete;
    virtual ~ArchiveReader() = default;

    /// The next header, or the wanted one after passing over all before it.
    virtual Outcome next(EntryFacts& facts) = 0;
    /// Passes over the data of the entry; for readers of all entries. `done` or `failed`.
    virtual Outcome skip() = 0;
    /// Some bytes of the wanted entry, 0 at its end, nothing on failure.
    virtual std::optional<size_t> read(std::span<char> buffer) = 0;
    /// The reader's words for the last failure, if it has any. Any bytes.
    virtual std::optional<std::string> errorText() const = 0;
};

/// Throws ContainerError when no reader can be made. A file that is no archive shows in the first `next`.
using ArchiveReaderFactory = std::function<std::unique_ptr<ArchiveReader>(ArchiveRequest request)>;

/// The user-facing error for the reader's last failure.
ContainerError archiveFailure(const ArchiveReader& reader);

/// The archive at a path that had no link in it when it was checked. Throws ContainerError.
FileDescriptor openArchive(const FileUrl& archive);

} // namespace quillmere
