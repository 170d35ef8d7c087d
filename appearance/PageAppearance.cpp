#include "appearance/PageAppearance.h"

#include "base/Text.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace quillmere {

int64_t wholePercent(double fraction) {
    const double whole = std::trunc(fraction * 100);
    if (std::isnan(whole))
        return 0;
    if (whole >= 0x1p63)
        return std::numeric_limits<int64_t>::max();
    if (whole <= -0x1p63)
        return std::numeric_limits<int64_t>::min();
    return static_cast<int64_t>(whole);
}

JsonObject pageAppearance(const AppearancePreferences& preferences, const std::string& customUrl) {
    const bool none = preferences.photo.empty();
    const bool preset = !none && preferences.photo != AppearancePreferences::customPhoto;
    return {{"airOutline", preferences.airOutline},
            {"showZoom", preferences.showZoom},
            {"bgColor", preferences.tint},
            {"bgMode", none ? "color" : "photo"},
            {"bgPreset", preset ? "backgrounds/" + preferences.photo : std::string()},
            {"bgCustomUrl", customUrl},
            {"bgAlpha", wholePercent(preferences.photoOpacity)},
            {"bgBlur", jsonNumber(preferences.photoBlur)},
            {"winBlur", false}};
}

std::string customPhotoUrl(const std::string& grantPath, double changedSeconds) {
    return grantPath + "?v=" + shortestDouble(changedSeconds);
}

} // namespace quillmere
