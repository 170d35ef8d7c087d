#include "bridge/ContainerGeneration.h"

#include "base/Fatal.h"

#include <limits>

namespace quillmere {

int64_t ContainerGeneration::raise() {
    const std::lock_guard guard(lock_);
    if (value_ == std::numeric_limits<int64_t>::max())
        fatalStop("the container generation has overflowed");
    return ++value_;
}

int64_t ContainerGeneration::value() const {
    const std::lock_guard guard(lock_);
    return value_;
}

} // namespace quillmere
