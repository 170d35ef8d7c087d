#pragma once

#include "base/FileUrl.h"

#include <string>

namespace quillmere::platform::gtk {

/// Whether a file that was opened belongs into the desktop's list: not what was unpacked into the caches.
bool isWorthRemembering(const FileUrl& file, const FileUrl& caches);

/// Tells the desktop's list of recent files of one that the named application has opened. Main thread.
void noteRecentFile(const FileUrl& file, const std::string& application);

} // namespace quillmere::platform::gtk
