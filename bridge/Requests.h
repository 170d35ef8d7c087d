#pragma once

#include "bridge/ContainerGeneration.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace quillmere {

/// Numbers what the user asks for. Work goes on in the background while newer requests come in; its result is applied
/// only while its request is still the newest. Main thread only, except the test that `stale` returns.
class Requests {
public:
    using Ticket = int64_t;

    /// A new request: results of every earlier one are dropped, and container work under way is told to stop. An
    /// overflow stops the process.
    Ticket begin();
    /// A new request for the document that is shown already: container work is not concerned.
    Ticket beginAgain();
    /// Ends whatever is under way without asking for anything else.
    Ticket abandon() { return begin(); }

    bool isCurrent(Ticket ticket) const noexcept { return ticket == requestID_; }
    Ticket current() const noexcept { return requestID_; }
    /// Tells from now on whether container work that belongs to the newest request has to stop. Any thread.
    std::function<bool()> stale() const;

private:
    Ticket requestID_ = 0;
    std::shared_ptr<ContainerGeneration> containerGeneration_ = std::make_shared<ContainerGeneration>();
};

} // namespace quillmere
