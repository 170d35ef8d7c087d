#pragma once

#include "base/FileUrl.h"

#include <optional>
#include <string>
#include <vector>

namespace quillmere::platform::gtk {

/// The text of the program's desktop entry (freedesktop.org Desktop Entry 1.5) for these MIME types; nothing for a
/// program whose path an entry cannot name.
std::optional<std::string> desktopEntry(const FileUrl& program, const std::vector<std::string>& mimeTypes);

} // namespace quillmere::platform::gtk
