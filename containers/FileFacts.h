#pragma once

#include "base/FileDescriptor.h"
#include "base/FileIdentity.h"
#include "base/FileUrl.h"

#include <cstdint>
#include <string>
#include <sys/stat.h>

namespace quillmere {

/// Facts and handles of files for whom a check must still hold when they are used. All throw
/// std::filesystem::filesystem_error that names the file.
namespace fileFacts {

FileIdentity identity(const struct stat& status);

/// Changes when the file does: number, size and modification time to the whole second. For comparing within one run.
std::string fingerprint(const struct stat& status);

/// Of the file itself, not of a link's target.
struct stat statusOf(const FileUrl& file);
struct stat statusOf(const FileDescriptor& handle, const FileUrl& file);

enum class Handle {
    place,    ///< only names the file: nothing is opened that opening could change or block on
    contents, ///< of a file, for reading
    folder    ///< for reading its names; anything else fails with ENOTDIR and is left alone
};

/// Opens a file, by a path none of whose components is a symbolic link; a link fails with ELOOP.
FileDescriptor openWithoutLinks(const FileUrl& file, Handle handle);

/// The same below an open folder; `relative` is clean, and "" means the folder. Nothing outside is ever reached.
FileDescriptor openBelow(const FileDescriptor& folder, const std::string& relative, Handle handle,
                         const FileUrl& named);

/// What `openBelow` does where the kernel has no call for it: one component after the other.
FileDescriptor walkBelow(const FileDescriptor& folder, const std::string& relative, Handle handle,
                         const FileUrl& named);

} // namespace fileFacts

} // namespace quillmere
