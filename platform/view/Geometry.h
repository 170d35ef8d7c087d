#pragma once

#include <cstdint>
#include <optional>
#include <variant>

namespace quillmere::view {

/// Logical points.
struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size&) const = default;
};

struct Insets {
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;
    bool operator==(const Insets&) const = default;
};

/// sRGB components and alpha, 0 to 1.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    bool operator==(const Color&) const = default;
};

/// How a child stands in an overlay.
struct Fill {
    Insets insets{};
};
struct Centered {};
struct TopTrailing {
    double top = 0;
    double trailing = 0;
};
using Placement = std::variant<Fill, Centered, TopTrailing>;

} // namespace quillmere::view
