#pragma once

#include "platform/view/View.h"

#include <functional>
#include <utility>

namespace quillmere {

/// A push button that carries its action.
class LifecycleButton {
public:
    explicit LifecycleButton(std::function<void()> handler) : handler_(std::move(handler)) {}

    void invoke() const { handler_(); }

    /// The button as it looks; pressing it invokes the action.
    view::ViewRef view(view::Button looks) const {
        looks.onPress = [button = *this] { button.invoke(); };
        return view::View::make(std::move(looks));
    }

private:
    std::function<void()> handler_;
};

} // namespace quillmere
