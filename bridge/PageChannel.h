#pragma once

#include "bridge/OutboundMessage.h"
#include "bridge/Requests.h"

#include <optional>
#include <string>

namespace quillmere {

/// The way to the page. Nothing is queued: what is sent while the page is not ready is dropped. Main thread only.
class PageChannel {
public:
    /// What the channel needs from its owner.
    class Host {
    public:
        virtual ~Host() = default;
        /// Runs script in the page.
        virtual void evaluate(const std::string& script) = 0;
    };

    /// The host outlives the channel.
    explicit PageChannel(Host& host) : host_(host) {}

    bool ready() const noexcept { return ready_; }
    void setReady(bool ready) noexcept { ready_ = ready; }

    /// The session that the current document belongs to, or that is listed; told with each message of a request.
    const std::optional<std::string>& containerToken() const noexcept { return currentContainerToken_; }
    void setContainerToken(std::optional<std::string> token) { currentContainerToken_ = std::move(token); }

    /// Every message to the page; `container` becomes its member of that name.
    void send(JsonObject message, const WrittenListing* container = nullptr);
    void sendBusy(Requests::Ticket ticket, const std::string& name);
    void sendError(Requests::Ticket ticket, const std::optional<std::string>& name, const std::string& text);
    /// Not a message: the page has an entry of its own for how it is to look.
    void applyPlatformPreferences(const JsonObject& preferences);

private:
    Host& host_;
    bool ready_ = false;
    std::optional<std::string> currentContainerToken_;
};

} // namespace quillmere
