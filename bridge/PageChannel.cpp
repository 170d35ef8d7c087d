#include "bridge/PageChannel.h"

namespace quillmere {

void PageChannel::send(JsonObject message, const WrittenListing* container) {
    addContainerToken(message, currentContainerToken_);
    if (!ready_)
        return;
    const auto script =
        container ? pageCall("receive", message, "container", *container) : pageCall("receive", message);
    if (script)
        host_.evaluate(*script);
}

void PageChannel::sendBusy(Requests::Ticket ticket, const std::string& name) {
    send({{"type", "busy"}, {"name", name}, {"requestId", ticket}});
}

void PageChannel::sendError(Requests::Ticket ticket, const std::optional<std::string>& name, const std::string& text) {
    JsonObject message{{"type", "error"}, {"message", text}, {"requestId", ticket}};
    if (name)
        message["name"] = *name;
    send(std::move(message));
}

void PageChannel::applyPlatformPreferences(const JsonObject& preferences) {
    if (!ready_)
        return;
    if (const auto script = pageCall("applyPlatformPreferences", preferences))
        host_.evaluate(*script);
}

} // namespace quillmere
