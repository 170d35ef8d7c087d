#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

/// Lower case of ASCII letters only.
std::string asciiLower(std::string_view text);
/// Lower case of all letters, locale-independent; bytes that are not UTF-8 come back unchanged.
std::string lowercase(std::string_view text);

bool isValidUtf8(std::string_view text);
/// The text with every invalid UTF-8 sequence replaced by U+FFFD: for names that must be shown.
std::string displayText(std::string_view bytes);

/// Percent-encoding of a URL path (RFC 3986): ASCII letters, digits and -._~!$&'()*+,=:@/ stay; every other byte
/// becomes a percent sign and two upper-case hexadecimal digits.
std::string percentEncodePath(std::string_view bytes);
/// Undoes percent-encoding; nothing when an escape is not two hexadecimal digits.
std::optional<std::string> percentDecode(std::string_view text);

/// Shortest decimal form that reads back to the same value, with at least one digit after the point.
std::string shortestDouble(double value);

/// The bytes as lower-case hexadecimal digits.
std::string hexadecimal(std::string_view bytes);

} // namespace quillmere
