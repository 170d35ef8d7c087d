#pragma once

#include "base/Json.h"
#include "bridge/PageChannel.h"

#include <algorithm>
#include <string>
#include <vector>

namespace quillmere::tests {

/// The page's end of a channel: keeps what arrives.
class Page : public PageChannel::Host {
public:
    void evaluate(const std::string& script) override { scripts.push_back(script); }

    /// The messages, in the order of their arrival.
    std::vector<JsonObject> messages() const {
        constexpr std::string_view head = "window.Quillmere?.receive(";
        std::vector<JsonObject> found;
        for (const auto& script : scripts)
            if (script.starts_with(head))
                found.push_back(parseJson(std::string_view(script).substr(head.size(), script.size() - head.size() - 2))
                                    ->as_object());
        return found;
    }

    JsonObject last(const std::string& type) const {
        const auto all = messages();
        const auto found = std::find_if(all.rbegin(), all.rend(),
                                        [&](const auto& message) { return stringField(message, "type") == type; });
        return found == all.rend() ? JsonObject() : *found;
    }

    std::vector<std::string> scripts;
};

} // namespace quillmere::tests
