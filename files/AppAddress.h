#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

/// The private scheme and its one host: the page and everything that it may fetch live under "quillmere://app/".
inline constexpr const char* appScheme = "quillmere";
inline constexpr const char* appHost = "app";
inline constexpr const char* appIndex = "quillmere://app/index.html";

/// Whether a URL has the private scheme and host, both compared exactly: no other case, no alias.
bool isAppAddress(std::string_view url);

/// The path of such a URL, percent escapes undone, without query and fragment. Nothing for any other URL, for an escape
/// that is none and for a path that holds a NUL.
std::optional<std::string> appPath(std::string_view url);

} // namespace quillmere
