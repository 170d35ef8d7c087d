#pragma once

#include "base/FileUrl.h"
#include "platform/ImageCodec.h"

#include <optional>

namespace quillmere {

/// The user's own background photo, kept as a scaled copy in the support folder.
struct BackgroundPhoto {
    static constexpr int longestSide = 2560;

    FileUrl support;

    FileUrl file() const { return support.appending("background.png"); }
    bool exists() const;
    /// Seconds since 1970 of the last change; 0 when they cannot be read.
    double changedSeconds() const;
    /// Replaces the photo by a scaled copy of `source`. False, with the former photo untouched, when that fails. Any
    /// thread but the main one.
    bool replace(const FileUrl& source, platform::ImageCodec& images) const;
};

} // namespace quillmere
