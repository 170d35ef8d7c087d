#pragma once

#include "platform/view/View.h"

namespace quillmere {

/// The window's background: the desktop behind it, blurred, under the user's tint. Main thread only.
class BackgroundView {
public:
    static constexpr double tintAlpha = 0.65;

    BackgroundView();

    const view::ViewRef& view() const noexcept { return view_; }
    /// The colour as the user chose it; it is laid on with an alpha of its own.
    void setTint(view::Color color);

private:
    view::ViewRef view_;
    view::ViewRef material_;
    view::ViewRef tintView_;
};

} // namespace quillmere
