#pragma once

#include <cstdint>
#include <mutex>

namespace quillmere {

/// The shared counter of container work. Work that began under an older value is stale and has to stop. Any thread.
class ContainerGeneration {
public:
    /// Raises the counter and returns its new value. An overflow stops the process.
    int64_t raise();
    int64_t value() const;

private:
    mutable std::mutex lock_;
    int64_t value_ = 0;
};

} // namespace quillmere
