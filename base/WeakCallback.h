#pragma once

#include <memory>
#include <utility>

namespace quillmere {

/// A callback that does nothing once its owner is gone. `action` takes the owner as its first argument. The owner is
/// locked where the callback runs, so it must run on the owner's thread.
template <typename Owner, typename Action>
auto weakly(std::weak_ptr<Owner> owner, Action action) {
    return [owner = std::move(owner), action = std::move(action)](auto&&... arguments) mutable {
        if (const auto alive = owner.lock())
            action(*alive, std::forward<decltype(arguments)>(arguments)...);
    };
}

} // namespace quillmere
