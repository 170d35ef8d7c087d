#include "platform/gtk/view/TextScale.h"

#include <gtk/gtk.h>

#include <charconv>
#include <cmath>
#include <regex>

namespace quillmere::platform::gtk {

namespace {

constexpr double usualResolution = 96.0 * 1024;
constexpr double pointsPerPixel = 0.75; // the toolkit takes the text resolution into account for points alone

} // namespace

double textScale() {
    GtkSettings* settings = gdk_display_get_default() ? gtk_settings_get_default() : nullptr;
    int resolution = 0;
    if (settings)
        g_object_get(settings, "gtk-xft-dpi", &resolution, nullptr);
    return resolution > 0 ? resolution / usualResolution : 1;
}

int scaled(double points) {
    return static_cast<int>(std::lround(points * textScale()));
}

std::string scalingLengths(const std::string& rules) {
    static const std::regex length(R"((-?[0-9]*\.?[0-9]+)px\b)");
    std::string result;
    auto from = rules.cbegin();
    for (std::sregex_iterator match(rules.begin(), rules.end(), length), end; match != end; ++match) {
        result.append(from, (*match)[0].first);
        char digits[32];
        const auto stop = std::to_chars(digits, digits + sizeof digits, std::stod((*match)[1]) * pointsPerPixel,
                                        std::chars_format::fixed, 3)
                              .ptr;
        result.append(digits, stop).append("pt");
        from = (*match)[0].second;
    }
    return result.append(from, rules.cend());
}

} // namespace quillmere::platform::gtk
