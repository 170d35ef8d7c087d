#pragma once

#include <chrono>
#include <functional>

namespace quillmere {

using SteadyTime = std::chrono::steady_clock::time_point;
using WallTime = std::chrono::system_clock::time_point;

/// Time comes in as a function, so that deadlines and ages can be tested without waiting.
using SteadyClock = std::function<SteadyTime()>;
using WallClock = std::function<WallTime()>;

inline SteadyTime steadyNow() {
    return std::chrono::steady_clock::now();
}
inline WallTime wallNow() {
    return std::chrono::system_clock::now();
}

/// The age at which cached results and session folders are removed.
inline constexpr std::chrono::seconds cacheAgeLimit{1'209'600};

} // namespace quillmere
