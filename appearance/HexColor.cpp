#include "appearance/HexColor.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <optional>

namespace quillmere {

namespace {

constexpr uint32_t defaultTint = 0x141614;

std::optional<uint32_t> parseHex(std::string_view digits) {
    const bool negative = digits.starts_with('-');
    if (negative || digits.starts_with('+'))
        digits.remove_prefix(1);
    uint32_t value = 0;
    const auto [stop, error] = std::from_chars(digits.begin(), digits.end(), value, 16);
    if (digits.empty() || error != std::errc() || stop != digits.end() || (negative && value != 0))
        return std::nullopt;
    return value;
}

double component(uint32_t value, unsigned shift) {
    return static_cast<double>((value >> shift) & 0xFFU) / 255;
}

unsigned step(double component) {
    return std::isfinite(component) ? static_cast<unsigned>(std::clamp(component, 0.0, 1.0) * 255) : 0;
}

} // namespace

view::Color colorFromHex(std::string_view text) {
    while (text.starts_with('#'))
        text.remove_prefix(1);
    while (text.ends_with('#'))
        text.remove_suffix(1);
    const uint32_t value = parseHex(text).value_or(defaultTint);
    return {.red = component(value, 16), .green = component(value, 8), .blue = component(value, 0), .alpha = 1};
}

std::string hexFromColor(const view::Color& color) {
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", step(color.red), step(color.green), step(color.blue));
    return text;
}

} // namespace quillmere
