#pragma once

#include <boost/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

namespace json = boost::json;

/// A bridge message or a stored record: string keys, JSON values.
using JsonObject = json::object;

/// Compact JSON text; nothing when a string in it is not valid UTF-8 or a number is not finite.
std::optional<std::string> compactJson(const json::value& value);

/// JSON text that may stand inside a line of script: U+2028, U+2029 and "</" are written as escapes.
std::optional<std::string> scriptJson(const json::value& value);

/// Parses JSON of bounded depth; nothing when it is malformed. Numbers are read to the last bit, and an escape that
/// stands for half a character as U+FFFD.
std::optional<json::value> parseJson(std::string_view text);

/// The number, as an integer where it is a whole one.
json::value jsonNumber(double value);

/// The string under `key`; nothing when it is absent or of another kind.
std::optional<std::string> stringField(const JsonObject& object, std::string_view key);
/// The boolean under `key`; nothing when it is absent or of another kind.
std::optional<bool> boolField(const JsonObject& object, std::string_view key);

} // namespace quillmere
