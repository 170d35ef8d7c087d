#include "bridge/InboundMessage.h"

#include "files/AppAddress.h"

#include <utility>

namespace quillmere {

namespace {

std::optional<InboundType> inboundType(std::string_view name) {
    static constexpr std::pair<std::string_view, InboundType> table[] = {
        {"ready", InboundType::ready},
        {"open-dialog", InboundType::openDialog},
        {"open-folder-dialog", InboundType::openFolderDialog},
        {"container-open", InboundType::containerOpen},
        {"container-up", InboundType::containerUp},
        {"container-refresh", InboundType::containerRefresh},
        {"cancel-preview", InboundType::cancelPreview},
        {"clipboard-copy", InboundType::clipboardCopy},
        {"copy-text", InboundType::copyText},
        {"mac-settings", InboundType::macSettings},
        {"pick-background", InboundType::pickBackground},
        {"clear-background", InboundType::clearBackground},
        {"min", InboundType::minimize},
        {"max", InboundType::maximize},
        {"close", InboundType::close},
        {"default-apps", InboundType::defaultApps},
        {"uninstall", InboundType::uninstall},
        {"drag", InboundType::drag},
        {"open-sample", InboundType::openSample},
        {"transcode-media", InboundType::transcodeMedia},
    };
    for (const auto& [known, type] : table)
        if (name == known)
            return type;
    return std::nullopt;
}

} // namespace

std::optional<InboundMessage> acceptMessage(const platform::ScriptMessage& message) {
    if (!message.mainFrame || !message.frameUrl || !isAppAddress(*message.frameUrl) || !message.body.is_object())
        return std::nullopt;
    const JsonObject& body = message.body.get_object();
    const auto name = stringField(body, "type");
    const auto type = name ? inboundType(*name) : std::nullopt;
    if (!type)
        return std::nullopt;
    return InboundMessage{.type = *type, .body = body};
}

std::optional<std::string> sampleFileName(const std::string& name) {
    const auto end = name.find_last_not_of('/');
    if (end == std::string::npos || name.find('\0') != std::string::npos)
        return std::nullopt;
    const std::string trimmed = name.substr(0, end + 1);
    std::string last = trimmed.substr(trimmed.rfind('/') + 1);
    if (last == "." || last == "..")
        return std::nullopt;
    return last;
}

bool isCopyable(const std::optional<std::string>& text) {
    constexpr size_t limit = 16'777'216;
    return text && !text->empty() && text->size() <= limit;
}

} // namespace quillmere
