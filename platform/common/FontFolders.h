#pragma once

#include "base/FileUrl.h"

#include <vector>

namespace quillmere::platform {

/// The folders of the font configuration that exist, the user's own among them; none that holds the user's whole home.
/// Any thread.
std::vector<FileUrl> fontFolders(const FileUrl& home);

} // namespace quillmere::platform
