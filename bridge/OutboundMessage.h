#pragma once

#include "base/Json.h"

#include <optional>
#include <string>

namespace quillmere {

/// Adds the container's token to a message of one of the types that carry it.
void addContainerToken(JsonObject& message, const std::optional<std::string>& token);

/// The script that hands a value to a function of the page's global object, on one line whatever the value holds;
/// nothing when the value cannot be written. A page without that function ignores the call.
std::optional<std::string> pageCall(const char* function, const JsonObject& value);

} // namespace quillmere
