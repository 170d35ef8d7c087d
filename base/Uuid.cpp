#include "base/Uuid.h"

#include <array>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <sys/random.h>
#include <system_error>

namespace quillmere {

namespace {

using UuidBytes = std::array<uint8_t, 16>;

/// Asks the operating system for many at once: a listing needs thousands.
UuidBytes randomBytes() {
    thread_local std::array<UuidBytes, 16> reserve; // 256 bytes come whole, or not at all
    thread_local size_t left = 0;
    while (left == 0) {
        const auto count = ::getrandom(reserve.data(), sizeof reserve, 0);
        if (count == static_cast<ssize_t>(sizeof reserve))
            left = reserve.size();
        else if (errno != EINTR)
            throw std::system_error(errno, std::generic_category(), "getrandom");
    }
    return reserve[--left];
}

} // namespace

std::string newUuid() {
    constexpr char digits[] = "0123456789ABCDEF";
    UuidBytes bytes = randomBytes();
    bytes[6] = static_cast<uint8_t>((bytes[6] & 0x0FU) | 0x40U); // version 4
    bytes[8] = static_cast<uint8_t>((bytes[8] & 0x3FU) | 0x80U); // the RFC's variant
    std::string text;
    text.reserve(36);
    for (size_t at = 0; at < bytes.size(); ++at) {
        if (at == 4 || at == 6 || at == 8 || at == 10)
            text += '-';
        text += digits[bytes[at] >> 4U];
        text += digits[bytes[at] & 0xFU];
    }
    return text;
}

bool isUuid(std::string_view text) {
    if (text.size() != 36)
        return false;
    for (size_t at = 0; at < text.size(); ++at) {
        const bool hyphen = at == 8 || at == 13 || at == 18 || at == 23;
        if (hyphen ? text[at] != '-' : std::isxdigit(static_cast<unsigned char>(text[at])) == 0)
            return false;
    }
    return true;
}

} // namespace quillmere
