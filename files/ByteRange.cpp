#include "files/ByteRange.h"

#include "base/Errors.h"

#include <algorithm>
#include <charconv>

namespace quillmere {

namespace {

[[noreturn]] void refuse() {
    throw FileFailure("Invalid byte range.");
}

/// Decimal digits with at most one "+" before them.
std::optional<uint64_t> parseNumber(std::string_view text) {
    if (text.starts_with('+'))
        text.remove_prefix(1);
    uint64_t value = 0;
    const auto [stop, error] = std::from_chars(text.begin(), text.end(), value);
    if (text.empty() || error != std::errc() || stop != text.end())
        return std::nullopt;
    return value;
}

ByteRange suffix(std::string_view count, uint64_t size) {
    const auto wanted = parseNumber(count);
    if (!wanted || *wanted == 0)
        refuse();
    const uint64_t length = std::min(*wanted, size);
    return {.start = size - length, .length = length, .partial = true};
}

} // namespace

ByteRange byteRange(std::optional<std::string_view> header, uint64_t size) {
    constexpr std::string_view unit = "bytes=";
    if (!header)
        return {.start = 0, .length = size, .partial = false};
    if (size == 0 || !header->starts_with(unit) || header->find(',') != std::string_view::npos)
        refuse();
    const std::string_view range = header->substr(unit.size());
    const auto dash = range.find('-');
    if (dash == std::string_view::npos || range.find('-', dash + 1) != std::string_view::npos)
        refuse();
    const std::string_view first = range.substr(0, dash);
    const std::string_view second = range.substr(dash + 1);
    if (first.empty())
        return suffix(second, size);

    const auto start = parseNumber(first);
    if (!start || *start >= size)
        throw FileFailure("Unsatisfiable byte range.");
    uint64_t end = size - 1;
    if (!second.empty()) {
        const auto asked = parseNumber(second);
        if (!asked || *asked < *start)
            refuse();
        end = std::min(*asked, end);
    }
    return {.start = *start, .length = end - *start + 1, .partial = true};
}

} // namespace quillmere
