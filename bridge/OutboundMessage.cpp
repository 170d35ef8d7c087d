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

} // namespace quillmere
