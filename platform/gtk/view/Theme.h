#pragma once

#include "platform/view/Geometry.h"

#include <string>

namespace quillmere::platform::gtk {

enum class Shade { dark, light };

/// The colours of the native parts, derived from the window's tint by the rules that the page follows too, so that both
/// look like one: its luminance chooses the shade, its hue, when it has one, becomes the accent.
struct Theme {
    Shade shade = Shade::dark;
    view::Color ink{};       // text and symbols
    view::Color secondInk{}; // meta text
    view::Color glass{};     // fill of floating surfaces
    view::Color sheet{};     // fill of surfaces with text to read
    view::Color accent{};
    view::Color onAccent{};

    static Theme fromTint(const view::Color& tint);
    bool operator==(const Theme&) const = default;
};

/// Relative luminance (WCAG) of an sRGB colour, 0 to 1; alpha does not count.
double luminance(const view::Color& color);

/// "rgba(r,g,b,a)" for a style sheet, the components as integers, independent of the locale.
std::string cssColor(const view::Color& color);

} // namespace quillmere::platform::gtk
