#pragma once

#include "platform/Dialogs.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace quillmere {

enum class LastAction { ordinary, destructive };

/// The program's own sheet: a symbol, a title, a message and a column of buttons on glass.
struct LifecycleSheet {
    using Action = std::pair<std::string, std::function<void()>>;

    std::string title;
    std::string symbol; // left out when the platform has no image of it
    std::string message;
    std::vector<Action> actions; // what pressing each button does
    LastAction last = LastAction::ordinary;
    std::function<void()> close{}; // of the close button; without it there is none

    /// `hasSymbol` says whether the symbol has an image.
    platform::SheetSpec build(bool hasSymbol) const;
};

/// The key that presses a button of the column.
view::ButtonKey lifecycleButtonKey(const std::string& title, size_t index);

} // namespace quillmere
