#pragma once

#include "base/FileUrl.h"

#include <string_view>

namespace quillmere::platform {

/// Replaces a file so that, whatever happens meanwhile, it holds either its old or its new contents: written beside it,
/// flushed to the disk, renamed. Readable by the user alone. Missing folders are made. Throws the file system's error.
void replaceFile(const FileUrl& file, std::string_view contents);

} // namespace quillmere::platform
