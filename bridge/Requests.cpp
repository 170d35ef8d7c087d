#include "bridge/Requests.h"

#include "base/Fatal.h"

#include <limits>

namespace quillmere {

Requests::Ticket Requests::begin() {
    containerGeneration_->raise();
    return beginAgain();
}

Requests::Ticket Requests::beginAgain() {
    if (requestID_ == std::numeric_limits<Ticket>::max())
        fatalStop("the request number has overflowed");
    return ++requestID_;
}

std::function<bool()> Requests::stale() const {
    return [counter = containerGeneration_, generation = containerGeneration_->value()] {
        return counter->value() != generation;
    };
}

} // namespace quillmere
