#include "appearance/AppearancePreferences.h"

#include "base/Json.h"

#include <cmath>

namespace quillmere {

namespace {

std::optional<double> numberField(const JsonObject& object, std::string_view key) {
    const auto* value = object.if_contains(json::string_view(key.data(), key.size()));
    if (!value || !value->is_number())
        return std::nullopt;
    const double number = value->to_number<double>();
    return std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<AppearancePreferences> decode(const std::string& stored) {
    const auto value = parseJson(stored);
    if (!value || !value->is_object())
        return std::nullopt;
    const JsonObject& object = value->get_object();
    auto tint = stringField(object, "tint");
    auto photo = stringField(object, "photo");
    const auto photoOpacity = numberField(object, "photoOpacity");
    const auto photoBlur = numberField(object, "photoBlur");
    const auto airOutline = boolField(object, "airOutline");
    const auto showZoom = boolField(object, "showZoom");
    if (!tint || !photo || !photoOpacity || !photoBlur || !airOutline || !showZoom)
        return std::nullopt;
    return AppearancePreferences{.tint = std::move(*tint),
                                 .photo = std::move(*photo),
                                 .photoOpacity = *photoOpacity,
                                 .photoBlur = *photoBlur,
                                 .airOutline = *airOutline,
                                 .showZoom = *showZoom};
}

} // namespace

AppearancePreferences AppearancePreferences::load(const platform::UserDefaults& defaults) {
    const auto stored = defaults.data(key);
    return (stored ? decode(*stored) : std::nullopt).value_or(AppearancePreferences{});
}

void AppearancePreferences::save(platform::UserDefaults& defaults) const {
    const auto text = compactJson(JsonObject{{"tint", tint},
                                             {"photo", photo},
                                             {"photoOpacity", jsonNumber(photoOpacity)},
                                             {"photoBlur", jsonNumber(photoBlur)},
                                             {"airOutline", airOutline},
                                             {"showZoom", showZoom}});
    if (text)
        defaults.setData(key, *text);
}

} // namespace quillmere
