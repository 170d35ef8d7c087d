#pragma once

#include "base/FileUrl.h"
#include "platform/Window.h"
#include "platform/view/Geometry.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quillmere::platform {

enum class AllowedTypes { all, images };

struct OpenPanelSpec {
    std::string title;
    bool files = true;
    bool folders = false;
    AllowedTypes types = AllowedTypes::all;
};

struct AlertSpec {
    std::string message;
    std::string informative;
    std::vector<std::string> buttons; // the first is the default one; empty means "OK"
};

struct ColorPanelSpec {
    view::Color color{};
    std::function<void(view::Color)> onChange; // at every step of the choice
};

/// Asks the user, as sheets of the window. Completions arrive on the main thread, never before the call has returned.
class Dialogs {
public:
    virtual ~Dialogs() = default;
    /// The chosen file or folder, or nothing when the user cancelled.
    virtual void openPanel(Window& window, const OpenPanelSpec& spec,
                           std::function<void(std::optional<FileUrl>)> completion) = 0;
    /// The index of the pressed button.
    virtual void alert(Window& window, const AlertSpec& spec, std::function<void(size_t)> completion) = 0;
    virtual void colorPanel(Window& window, ColorPanelSpec spec) = 0;
};

} // namespace quillmere::platform
