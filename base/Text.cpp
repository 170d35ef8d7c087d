#include "base/Text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <unicode/locid.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

namespace quillmere {

namespace {

constexpr std::string_view upperDigits = "0123456789ABCDEF";
constexpr std::string_view lowerDigits = "0123456789abcdef";

bool isAsciiAlphanumeric(unsigned char byte) {
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

int hexValue(char digit) {
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    return -1;
}

/// Calls `valid(start, end)` for each whole sequence and `invalid()` for each broken one.
template <typename Valid, typename Invalid>
void walkUtf8(std::string_view text, Valid valid, Invalid invalid) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const auto length = static_cast<int64_t>(text.size());
    int64_t at = 0;
    while (at < length) {
        // ICU counts in 32 bits; a window keeps larger texts possible.
        const auto window = static_cast<int32_t>(std::min<int64_t>(length - at, 4));
        int32_t step = 0;
        UChar32 point = 0;
        U8_NEXT(bytes + at, step, window, point); // NOLINT(bugprone-inc-dec-in-conditions): within the macro
        if (point < 0)
            invalid();
        else
            valid(static_cast<size_t>(at), static_cast<size_t>(at + step));
        at += step;
    }
}

} // namespace

std::string asciiLower(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

std::string lowercase(std::string_view text) {
    const bool ascii = std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (ascii || !isValidUtf8(text))
        return asciiLower(text);
    std::string lower;
    icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())))
        .toLower(icu::Locale::getRoot())
        .toUTF8String(lower);
    return lower;
}

bool isValidUtf8(std::string_view text) {
    bool good = true;
    walkUtf8(text, [](size_t, size_t) {}, [&] { good = false; });
    return good;
}

std::string displayText(std::string_view bytes) {
    std::string shown;
    shown.reserve(bytes.size());
    walkUtf8(
        bytes, [&](size_t start, size_t end) { shown.append(bytes.substr(start, end - start)); },
        [&] { shown += "\xEF\xBF\xBD"; });
    return shown;
}

std::string percentEncodePath(std::string_view bytes) {
    constexpr std::string_view kept = "-._~!$&'()*+,=:@/";
    std::string encoded;
    encoded.reserve(bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (isAsciiAlphanumeric(byte) || kept.find(c) != std::string_view::npos) {
            encoded += c;
        } else {
            encoded += '%';
            encoded += upperDigits[byte >> 4U];
            encoded += upperDigits[byte & 0xFU];
        }
    }
    return encoded;
}

std::optional<std::string> percentDecode(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            decoded += text[at];
            continue;
        }
        if (at + 2 >= text.size())
            return std::nullopt;
        const int high = hexValue(text[at + 1]);
        const int low = hexValue(text[at + 2]);
        if (high < 0 || low < 0)
            return std::nullopt;
        decoded += static_cast<char>(high * 16 + low);
        at += 2;
    }
    return decoded;
}

std::string shortestDouble(double value) {
    char buffer[512];
    const auto end = std::to_chars(std::begin(buffer), std::end(buffer), value, std::chars_format::fixed).ptr;
    std::string text(std::begin(buffer), end);
    if (text.find_first_not_of("-0123456789") == std::string::npos)
        text += ".0";
    return text;
}

std::string hexadecimal(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += lowerDigits[byte >> 4U];
        text += lowerDigits[byte & 0xFU];
    }
    return text;
}

} // namespace quillmere
