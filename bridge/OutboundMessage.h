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

/// A listing record as the page gets it, written beforehand: a large one is too much work for the main thread.
struct WrittenListing {
    std::optional<std::string> token; // as in the record
    std::optional<std::string> name;
    std::optional<std::string> json; // nothing when the record cannot be written
};

/// Any thread.
WrittenListing writeListing(const JsonObject& listing);

/// The same call with one more member, already written by `writeListing`.
std::optional<std::string> pageCall(const char* function, const JsonObject& value, const std::string& key,
                                    const WrittenListing& listing);

} // namespace quillmere
