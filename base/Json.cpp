#include "base/Json.h"

#include "base/Text.h"

#include <boost/json/basic_parser_impl.hpp>
#include <charconv>
#include <cmath>
#include <utility>

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

/// Builds a value from the parser's events. The library's own builder takes the parser's doubles, which may be off by
/// some last bits; here they are read again from their text.
class ValueBuilder {
public:
    using Code = boost::system::error_code;
    using Text = json::string_view;
    static constexpr size_t max_object_size = json::object::max_size();
    static constexpr size_t max_array_size = json::array::max_size();
    static constexpr size_t max_key_size = json::string::max_size();
    static constexpr size_t max_string_size = json::string::max_size();

    json::value release() { return values_.release(); }

    bool on_document_begin(Code&) { return true; }
    bool on_document_end(Code&) { return true; }
    bool on_object_begin(Code&) { return true; }
    bool on_object_end(size_t count, Code&) {
        return add([&] { values_.push_object(count); });
    }
    bool on_array_begin(Code&) { return true; }
    bool on_array_end(size_t count, Code&) {
        return add([&] { values_.push_array(count); });
    }
    bool on_key_part(Text part, size_t, Code&) {
        return add([&] { values_.push_chars(part); });
    }
    bool on_key(Text rest, size_t, Code&) {
        return add([&] { values_.push_key(rest); });
    }
    bool on_string_part(Text part, size_t, Code&) {
        return add([&] { values_.push_chars(part); });
    }
    bool on_string(Text rest, size_t, Code&) {
        return add([&] { values_.push_string(rest); });
    }
    bool on_number_part(Text, Code&) { return true; } // the whole text is there at once
    bool on_int64(int64_t number, Text, Code&) {
        return add([&] { values_.push_int64(number); });
    }
    bool on_uint64(uint64_t number, Text, Code&) {
        return add([&] { values_.push_uint64(number); });
    }
    bool on_double(double near, Text text, Code&) {
        std::from_chars(text.data(), text.data() + text.size(), near);
        return add([&] { values_.push_double(near); });
    }
    bool on_bool(bool value, Code&) {
        return add([&] { values_.push_bool(value); });
    }
    bool on_null(Code&) {
        return add([&] { values_.push_null(); });
    }
    bool on_comment_part(Text, Code&) { return true; }
    bool on_comment(Text, Code&) { return true; }

private:
    template <typename Push>
    static bool add(Push push) {
        push();
        return true;
    }

    json::value_stack values_;
};

std::optional<json::value> parse(std::string_view text, boost::system::error_code& error) {
    json::parse_options options;
    options.max_depth = 512;
    json::basic_parser<ValueBuilder> parser(options);
    const size_t used = parser.write_some(false, text.data(), text.size(), error);
    if (error || used != text.size())
        return std::nullopt;
    return parser.handler().release();
}

/// The UTF-16 unit that a "\uXXXX" at this place stands for; nothing when there is none.
std::optional<unsigned> escapedUnit(std::string_view text, size_t at) {
    unsigned unit = 0;
    if (text.substr(at, 2) != "\\u" || text.size() < at + 6)
        return std::nullopt;
    const auto [end, error] = std::from_chars(text.data() + at + 2, text.data() + at + 6, unit, 16);
    return error == std::errc() && end == text.data() + at + 6 ? std::optional(unit) : std::nullopt;
}

/// JSON text in which escapes for half a character, which a script's strings may hold, stand for U+FFFD.
std::string withoutHalfCharacters(std::string_view text) {
    const auto isHigh = [](std::optional<unsigned> unit) { return unit && (*unit & 0xFC00U) == 0xD800U; };
    const auto isLow = [](std::optional<unsigned> unit) { return unit && (*unit & 0xFC00U) == 0xDC00U; };
    std::string whole(text);
    for (size_t at = whole.find('\\'); at != std::string::npos; at = whole.find('\\', at)) {
        const auto unit = escapedUnit(whole, at);
        if (isHigh(unit) && isLow(escapedUnit(whole, at + 6)))
            at += 12;
        else if (isHigh(unit) || isLow(unit))
            whole.replace(std::exchange(at, at + 6), 6, "\\uFFFD");
        else
            at += 2;
    }
    return whole;
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
    if (auto value = parse(text, error))
        return value;
    const auto mended = withoutHalfCharacters(text);
    return mended == text ? std::nullopt : parse(mended, error);
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
