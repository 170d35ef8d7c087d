#pragma once

#include "base/FileUrl.h"

#include <vector>

namespace quillmere {

inline constexpr const char* bundleName = "Quillmere.app";
inline constexpr const char* bundleIdentifier = "app.quillmere.viewer";
inline constexpr const char* bundlePropertyList = "Contents/Info.plist";

/// The folders in which a copy counts as installed.
inline std::vector<FileUrl> applicationsFolders(const FileUrl& home) {
    return {FileUrl("/Applications"), home.appending("Applications")};
}

/// The path by which two ways to the same file compare equal.
inline FileUrl normalised(const FileUrl& url) {
    return url.standardized().resolvingSymlinks();
}

} // namespace quillmere
