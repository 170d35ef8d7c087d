#pragma once

#include "base/FileDescriptor.h"
#include "base/FileUrl.h"

#include <dirent.h>
#include <memory>
#include <optional>
#include <string_view>
#include <sys/stat.h>

namespace quillmere {

struct FolderCloser {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// A folder whose names are being read.
using OpenFolder = std::unique_ptr<DIR, FolderCloser>;

/// Takes over a descriptor that is open for reading a folder. Nothing, with `errno`, when it cannot be read.
OpenFolder readFolder(FileDescriptor folder) noexcept;

/// The next name, without "." and "..", valid until the next call. Nothing at the end, with `errno` 0, and when reading
/// fails. A folder that changes meanwhile may name an entry twice or not at all.
std::optional<std::string_view> nextName(const OpenFolder& folder) noexcept;

/// Whether the folder belongs to this user and nobody else can change what it holds.
bool isPrivateFolder(const struct stat& facts) noexcept;

/// Makes a folder and the folders above it that are missing, for the user alone (0700). Throws the file system's error.
void makePrivateFolders(const FileUrl& folder);

} // namespace quillmere
