#pragma once

#include "base/Clock.h"

#include <algorithm>
#include <chrono>
#include <deque>

namespace quillmere::platform::gtk {

/// How long to wait before a page whose process has died is loaded again: hardly at all the first time, longer with
/// every death within a minute. A process that dies at its start would otherwise be started without end, and the engine
/// does not survive a new start from within the news of a death.
class ReloadPace {
public:
    static constexpr std::chrono::milliseconds shortest{100};
    static constexpr std::chrono::milliseconds longest{10'000};

    std::chrono::milliseconds afterDeath(SteadyTime now) {
        while (!deaths_.empty() && now - deaths_.front() >= std::chrono::minutes(1))
            deaths_.pop_front();
        deaths_.push_back(now);
        auto pause = shortest;
        for (size_t i = 1; i < deaths_.size() && pause < longest; ++i)
            pause *= 2;
        return std::min(pause, longest);
    }

private:
    std::deque<SteadyTime> deaths_; // of the last minute
};

} // namespace quillmere::platform::gtk
