#pragma once

#include "base/Clock.h"
#include "base/FileDescriptor.h"
#include "base/FileUrl.h"
#include "containers/WorkWatch.h"

#include <string>
#include <string_view>

namespace quillmere {

/// The private folder of extracted entries: one folder per session, in it one per entry. Everything is reached through
/// open folders and never through a link, so nothing can be written or removed anywhere else. A folder of another owner
/// or one that others may write to is not ours: it is left alone, and nothing is extracted into it.
class PreviewCache {
public:
    explicit PreviewCache(FileUrl folder) : folder_(std::move(folder)) {}

    /// Removes the folders of sessions that are older than the age limit. Failures are ignored. False when it was
    /// cancelled before its end.
    bool sweep(WallTime now, const CancellationTest& cancelled) const noexcept;
    /// Removes a session's folder with all that is in it. Failures are ignored.
    void removeSession(std::string_view token) const noexcept;

    /// A new, empty file for one entry. While it is not kept, its destruction removes it with the entry's folder.
    class EntryFile {
    public:
        EntryFile(FileUrl url, FileDescriptor session, std::string id, FileDescriptor file)
            : url_(std::move(url)), session_(std::move(session)), id_(std::move(id)), file_(std::move(file)) {}
        EntryFile(EntryFile&&) = default;
        ~EntryFile();

        /// Throws the file-system error.
        void write(std::string_view bytes);
        /// Closes the file and leaves it.
        FileUrl keep();

    private:
        FileUrl url_;
        FileDescriptor session_;
        std::string id_;
        FileDescriptor file_;
    };

    /// Creates the folders that are missing (0700) and the file (0600). File-system errors of the folders are passed
    /// on; a folder that is not ours and a file that cannot be created are a ContainerError.
    EntryFile createEntry(const std::string& token, const std::string& id, std::string_view entryName) const;

    /// The handle of an entry's file, which must not be reached through a link inside the cache (ELOOP). Throws
    /// file-system errors.
    FileDescriptor entryPlace(const FileUrl& entryFile) const;

private:
    FileUrl folder_;
};

/// The name of an extracted entry's file: the entry's own, or a short one with its extension when that is too long.
std::string entryFileName(std::string_view entryName);

} // namespace quillmere
