#pragma once

#include "platform/view/Geometry.h"

namespace quillmere::view {

/// A colour by its lightness, chroma and hue as the eye takes them; the hue in degrees.
struct Oklch {
    double lightness = 0;
    double chroma = 0;
    double hue = 0;
};
Oklch toOklch(const Color& color);
/// Components beyond sRGB are cut off.
Color fromOklch(const Oklch& color, double alpha = 1);

enum class Shade { dark, light };

/// The colours of the native parts, derived from the window's tint by the rules of the page's own style sheet, so that
/// both look like one: its luminance chooses the shade, its hue, when it has one, becomes the accent.
struct Theme {
    Shade shade = Shade::dark;
    Color ink{};       // text and symbols
    Color secondInk{}; // meta text
    Color glass{};     // fill of floating surfaces
    Color sheet{};     // fill of surfaces with text to read
    Color accent{};
    Color onAccent{};
    Color danger{};

    static Theme fromTint(const Color& tint);
    bool operator==(const Theme&) const = default;
};

/// Relative luminance (WCAG) of an sRGB colour, 0 to 1; alpha does not count.
double luminance(const Color& color);

} // namespace quillmere::view
