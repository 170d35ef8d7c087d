#pragma once

#include "base/Clock.h"

#include <functional>

namespace quillmere {

/// True once the caller no longer wants the result. Called on the thread that does the work.
using CancellationTest = std::function<bool()>;

/// Tells running work when to stop: at the caller's wish or, with a time limit, when its time is over. Borrows the test
/// and the clock.
class WorkWatch {
public:
    explicit WorkWatch(const CancellationTest& cancelled) : cancelled_(cancelled) {}
    WorkWatch(const CancellationTest& cancelled, const SteadyClock& clock, SteadyClock::result_type deadline)
        : cancelled_(cancelled), clock_(&clock), deadline_(deadline) {}

    /// Throws CancellationError.
    void throwIfCancelled() const;
    /// Throws the time-limit failure.
    void throwIfLate() const;
    /// Both, cancellation first.
    void check() const;

private:
    const CancellationTest& cancelled_;
    const SteadyClock* clock_ = nullptr;
    SteadyTime deadline_;
};

} // namespace quillmere
