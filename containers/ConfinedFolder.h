#pragma once

#include "base/FileDescriptor.h"
#include "base/FileUrl.h"
#include "containers/FileFacts.h"

#include <string_view>

namespace quillmere {

/// A place inside the chosen folder, reached without passing a link. The handle stays what was checked, whatever
/// happens to the names meanwhile.
struct ConfinedPlace {
    FileUrl url;
    FileDescriptor handle;
};

/// The URL of a relative path inside a folder; "." and ".." are taken out first. Throws the links failure for a path
/// that leaves the folder. Touches no file.
FileUrl confinedUrl(const FileUrl& folder, std::string_view relative);

/// Opens the place of a relative path inside `folder`. Throws the links failure when the path leaves the folder or any
/// part of it, the folder's own path included, is a link now; other failures of the file system are passed on.
ConfinedPlace confinedPlace(const FileUrl& folder, std::string_view relative, fileFacts::Handle handle);

} // namespace quillmere
