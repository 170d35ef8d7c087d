#include "bridge/OutboundMessage.h"

#include <algorithm>
#include <array>

namespace quillmere {

void addContainerToken(JsonObject& message, const std::optional<std::string>& token) {
    static constexpr std::array<std::string_view, 4> carriers = {"busy", "open", "error", "native-preview"};
    const auto type = stringField(message, "type");
    if (token && type && std::ranges::find(carriers, *type) != carriers.end())
        message["containerToken"] = *token;
}

std::optional<std::string> pageCall(const char* function, const JsonObject& value) {
    const auto text = scriptJson(value);
    if (!text)
        return std::nullopt;
    return "window.Quillmere?." + std::string(function) + "(" + *text + ");";
}

WrittenListing writeListing(const JsonObject& listing) {
    return {.token = stringField(listing, "token"), .name = stringField(listing, "name"), .json = scriptJson(listing)};
}

std::optional<std::string> pageCall(const char* function, const JsonObject& value, const std::string& key,
                                    const WrittenListing& listing) {
    auto text = scriptJson(value);
    const auto name = scriptJson(json::string(key));
    if (!text || !name || !listing.json)
        return std::nullopt;
    text->pop_back(); // the object's closing brace
    std::string call = "window.Quillmere?." + std::string(function) + "(";
    call.reserve(call.size() + text->size() + name->size() + listing.json->size() + 8);
    call += *text;
    if (!value.empty())
        call += ',';
    call += *name;
    call += ':';
    call += *listing.json;
    call += "});";
    return call;
}

} // namespace quillmere
