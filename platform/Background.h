#pragma once

#include "base/Errors.h"
#include "platform/Executors.h"

#include <memory>
#include <string>
#include <utility>
#include <variant>

namespace quillmere::platform {

/// Why background work came to nothing, as the user reads it.
struct Failure {
    std::string message;
};
/// The work was told to stop; nobody is told of it.
struct Cancelled {};

template <typename Result>
using Outcome = std::variant<Result, Failure, Cancelled>;

/// Runs `work` on a queue and hands what it came to to `apply` on the main thread, with the owner as first argument.
/// The worker never touches the owner, which is locked on the main thread only; nothing is applied once it is gone.
template <typename Owner, typename Work, typename Apply>
void runInBackground(Executor& queue, MainExecutor& main, std::weak_ptr<Owner> owner, Work work, Apply apply) {
    using Result = std::invoke_result_t<Work&>;
    queue.submit([main = &main, owner = std::move(owner), work = std::move(work), apply = std::move(apply)]() mutable {
        Outcome<Result> outcome = Cancelled{};
        try {
            outcome = work();
        } catch (const CancellationError&) {
            outcome = Cancelled{};
        } catch (const std::exception& error) {
            outcome = Failure{userMessage(error)};
        }
        main->post([owner = std::move(owner), apply = std::move(apply), outcome = std::move(outcome)]() mutable {
            if (const auto alive = owner.lock())
                apply(*alive, std::move(outcome));
        });
    });
}

} // namespace quillmere::platform
