#include "platform/view/Theme.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace quillmere::view {

namespace {

constexpr double lightFrom = 0.32; // luminance of the tint
constexpr double hueFrom = 0.02;   // chroma from which a tint counts as coloured
constexpr double celadon = 168;    // the accent's hue otherwise, degrees
constexpr double floatAlphaDark = 0.89, floatAlphaLight = 0.84;
constexpr double sheetAlphaDark = 0.97, sheetAlphaLight = 0.97;

double toLinear(double component) {
    return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double fromLinear(double component) {
    const double encoded = component <= 0.0031308 ? component * 12.92 : 1.055 * std::pow(component, 1 / 2.4) - 0.055;
    return std::clamp(encoded, 0.0, 1.0);
}

} // namespace

Oklch toOklch(const Color& color) {
    const double red = toLinear(color.red), green = toLinear(color.green), blue = toLinear(color.blue);
    const double l = std::cbrt(0.4122214708 * red + 0.5363325363 * green + 0.0514459929 * blue);
    const double m = std::cbrt(0.2119034982 * red + 0.6806995451 * green + 0.1073969566 * blue);
    const double s = std::cbrt(0.0883024619 * red + 0.2817188376 * green + 0.6299787005 * blue);
    const double a = 1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s;
    const double b = 0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s;
    return {.lightness = 0.2104542553 * l + 0.7936177850 * m - 0.0040720468 * s,
            .chroma = std::hypot(a, b),
            .hue = std::atan2(b, a) * 180 / std::numbers::pi};
}

Color fromOklch(const Oklch& color, double alpha) {
    const double angle = color.hue * std::numbers::pi / 180;
    const double a = color.chroma * std::cos(angle), b = color.chroma * std::sin(angle);
    const double l = std::pow(color.lightness + 0.3963377774 * a + 0.2158037573 * b, 3);
    const double m = std::pow(color.lightness - 0.1055613458 * a - 0.0638541728 * b, 3);
    const double s = std::pow(color.lightness - 0.0894841775 * a - 1.2914855480 * b, 3);
    return {.red = fromLinear(4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s),
            .green = fromLinear(-1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s),
            .blue = fromLinear(-0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s),
            .alpha = alpha};
}

double luminance(const Color& color) {
    return 0.2126 * toLinear(color.red) + 0.7152 * toLinear(color.green) + 0.0722 * toLinear(color.blue);
}

Theme Theme::fromTint(const Color& tint) {
    const auto [lightness, chroma, hue] = toOklch(tint);
    const double accentHue = chroma > hueFrom ? hue : celadon;
    if (luminance(tint) < lightFrom) {
        const double base = std::clamp(lightness, 0.175, 0.235), quiet = std::min(chroma, 0.04);
        return {.shade = Shade::dark,
                .ink = fromOklch({0.955, std::min(chroma * 0.25, 0.012), hue}),
                .secondInk = fromOklch({0.775, std::min(chroma * 0.4, 0.018), hue}),
                .glass = fromOklch({base + 0.065, quiet, hue}, floatAlphaDark),
                .sheet = fromOklch({base + 0.03, quiet, hue}, sheetAlphaDark),
                .accent = fromOklch({0.80, 0.088, accentHue}),
                .onAccent = fromOklch({0.20, 0.03, accentHue}),
                .danger = fromOklch({0.76, 0.125, 25})};
    }
    const double base = std::clamp(lightness, 0.965, 0.988), quiet = std::min(chroma, 0.016);
    return {.shade = Shade::light,
            .ink = fromOklch({0.235, std::min(chroma * 0.5, 0.018), hue}),
            .secondInk = fromOklch({0.435, std::min(chroma, 0.02), hue}),
            .glass = fromOklch({std::clamp(base + 0.02, 0.98, 0.995), quiet * 0.6, hue}, floatAlphaLight),
            .sheet = fromOklch({base, quiet, hue}, sheetAlphaLight),
            .accent = fromOklch({0.455, 0.083, accentHue}),
            .onAccent = fromOklch({0.985, 0.012, accentHue}),
            .danger = fromOklch({0.485, 0.155, 27})};
}

} // namespace quillmere::view
