#pragma once

#include "platform/view/View.h"

#include <functional>

namespace quillmere {

inline constexpr const char* folderSymbol = "folder";
inline constexpr const char* settingsSymbol = "slider.horizontal.3";

/// The floating toolbar at the top of the window, placed for an overlay.
struct Toolbar {
    view::ViewRef surface;
    view::ViewRef settingsButton;
};
Toolbar makeToolbar(std::function<void()> openFile, std::function<void()> showSettings);

/// What moves in the middle of the window while the page is not there yet, placed for an overlay.
view::ViewRef makeLoadingIndicator();

} // namespace quillmere
