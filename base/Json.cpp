#include "base/Json.h"

#include "base/Text.h"

#include <cmath>

namespace quillmere {

namespace {

bool isWritable(const json::value& value) {
    switch (value.kind()) {
    case json::kind::string:
        return isValidUtf8(std::string_view(value.get_string()));
    case json::kind::double_:
        return std::isfinite(value.get_double());
    case json::kind::array:
        for (const auto& item : value.get_array())
            if (!isWritable(item))
                return false;
        return true;
    case json::kind::object:
        for (const auto& [key, item] : value.get_object())
            if (!isValidUtf8(std::string_view(key)) || !isWritable(item))
                return false;
        return true;
    case json::kind::null:
    case json::kind::bool_:
    case json::kind::int64:
    case json::kind::uint64:
        return true;
    }
    return false;
}

} // namespace

std::optional<std::string> compactJson(const json::value& value) {
    if (!isWritable(value))
        return std::nullopt;
    return json::serialize(value);
}

std::optional<std::string> scriptJson(const json::value& value) {
    auto text = compactJson(value);
    if (!text)
        return std::nullopt;
    std::string script;
    script.reserve(text->size());
    for (size_t at = 0; at < text->size(); ++at) {
        const std::string_view rest = std::string_view(*text).substr(at);
        if (rest.starts_with("\xE2\x80\xA8") || rest.starts_with("\xE2\x80\xA9")) {
            script += rest[2] == '\xA8' ? "\\u2028" : "\\u2029";
            at += 2;
        } else if (rest.starts_with("</")) {
            script += "<\\/";
            at += 1;
        } else {
            script += rest.front();
        }
    }
    return script;
}

std::optional<json::value> parseJson(std::string_view text) {
    boost::system::error_code error;
    json::parse_options options;
    options.max_depth = 64;
    auto value = json::parse(json::string_view(text.data(), text.size()), error, {}, options);
    if (error)
        return std::nullopt;
    return value;
}

json::value jsonNumber(double value) {
    constexpr double exact = 9'007'199'254'740'992; // 2^53
    if (std::abs(value) <= exact && std::trunc(value) == value)
        return static_cast<int64_t>(value);
    return value;
}

std::optional<std::string> stringField(const JsonObject& object, std::string_view key) {
    const auto* value = object.if_contains(json::string_view(key.data(), key.size()));
    if (!value || !value->is_string())
        return std::nullopt;
    return std::string(value->get_string());
}

std::optional<bool> boolField(const JsonObject& object, std::string_view key) {
    const auto* value = object.if_contains(json::string_view(key.data(), key.size()));
    if (!value || !value->is_bool())
        return std::nullopt;
    return value->get_bool();
}

} // namespace quillmere
