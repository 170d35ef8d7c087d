#include "bridge/InboundMessage.h"

#include "files/AppAddress.h"

#include <utility>

namespace quillmere {

namespace {

using Reader = InboundMessage (*)(const JsonObject&);

template <typename Message>
InboundMessage plain(const JsonObject&) {
    return Message{};
}

template <typename Message>
InboundMessage withToken(const JsonObject& body) {
    return Message{.token = stringField(body, "token")};
}

InboundMessage containerOpen(const JsonObject& body) {
    return inbound::ContainerOpen{.token = stringField(body, "token"), .id = stringField(body, "id")};
}

InboundMessage copyText(const JsonObject& body) {
    const auto* identity = body.if_contains("copyRequestId");
    return inbound::CopyText{.text = stringField(body, "text"),
                             .copyRequestId = identity ? *identity : json::value(nullptr)};
}

InboundMessage openSample(const JsonObject& body) {
    return inbound::OpenSample{.name = stringField(body, "name")};
}

InboundMessage transcodeMedia(const JsonObject& body) {
    return inbound::TranscodeMedia{.url = stringField(body, "url"),
                                   .isAudio = boolField(body, "isAudio").value_or(false),
                                   .name = stringField(body, "name")};
}

Reader readerOf(std::string_view type) {
    static constexpr std::pair<std::string_view, Reader> table[] = {
        {"ready", plain<inbound::Ready>},
        {"open-dialog", plain<inbound::OpenDialog>},
        {"open-folder-dialog", plain<inbound::OpenDialog>},
        {"container-open", containerOpen},
        {"container-up", withToken<inbound::ContainerUp>},
        {"container-refresh", withToken<inbound::ContainerRefresh>},
        {"cancel-preview", plain<inbound::CancelPreview>},
        {"clipboard-copy", copyText},
        {"copy-text", copyText},
        {"mac-settings", plain<inbound::MacSettings>},
        {"pick-background", plain<inbound::PickBackground>},
        {"clear-background", plain<inbound::ClearBackground>},
        {"min", plain<inbound::Minimize>},
        {"max", plain<inbound::Maximize>},
        {"close", plain<inbound::Close>},
        {"default-apps", plain<inbound::DefaultApps>},
        {"uninstall", plain<inbound::Uninstall>},
        {"drag", plain<inbound::Drag>},
        {"open-sample", openSample},
        {"transcode-media", transcodeMedia},
    };
    for (const auto& [known, reader] : table)
        if (type == known)
            return reader;
    return nullptr;
}

} // namespace

std::optional<InboundMessage> acceptMessage(const platform::ScriptMessage& message) {
    if (!message.mainFrame || !message.frameUrl || !isAppAddress(*message.frameUrl) || !message.body.is_object())
        return std::nullopt;
    const JsonObject& body = message.body.get_object();
    const auto type = stringField(body, "type");
    const Reader reader = type ? readerOf(*type) : nullptr;
    return reader ? std::optional(reader(body)) : std::nullopt;
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
