#pragma once

#include <string>
#include <string_view>

namespace quillmere {

/// A fresh random UUID (RFC 4122, version 4) from the operating system's entropy, in upper-case canonical form.
std::string newUuid();

/// Whether the text is a UUID in canonical form, in either case.
bool isUuid(std::string_view text);

} // namespace quillmere
