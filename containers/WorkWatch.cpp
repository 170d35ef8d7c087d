#include "containers/WorkWatch.h"

#include "base/Errors.h"
#include "containers/ContainerMessages.h"

namespace quillmere {

void WorkWatch::throwIfCancelled() const {
    if (cancelled_ && cancelled_())
        throw CancellationError();
}

void WorkWatch::throwIfLate() const {
    if (clock_ && (*clock_)() > deadline_)
        throw ContainerError(messages::tookTooLong);
}

void WorkWatch::check() const {
    throwIfCancelled();
    throwIfLate();
}

} // namespace quillmere
