#pragma once

#include "base/Clock.h"
#include "base/FileUrl.h"

namespace quillmere {

/// Removes what was last written more than 14 days before `now` from the top level of the preview cache, except the
/// container browser's folder. A cache that is a link to a folder is that folder. Never fails. Any thread.
void cleanPreviewCache(const FileUrl& cache, WallTime now) noexcept;

} // namespace quillmere
