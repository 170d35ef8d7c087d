#pragma once

#include "base/FileUrl.h"
#include "platform/Window.h"
#include "platform/view/View.h"

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
    std::string message{}; // explains the choice; may be empty
};

struct AlertSpec {
    std::string message;
    std::string informative{};
    std::vector<std::string> buttons{}; // the first is the default one; empty means "OK"
};

struct ColorPanelSpec {
    view::Color color{};
    std::function<void(view::Color)> onChange; // at every step of the choice
};

/// A panel of the program's own design. Buttons with a key are pressed by it wherever the focus is in the panel.
struct SheetSpec {
    view::Size contentSize{};
    view::ViewRef content;
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
    /// Whether a sheet is attached to the window: an alert, a file panel or a panel of our own.
    virtual bool hasSheet(const Window& window) const = 0;
    /// Shows a panel of our own until `endSheet`. Only while no sheet is attached.
    virtual void beginSheet(Window& window, SheetSpec spec) = 0;
    virtual void endSheet(Window& window) = 0;
};

} // namespace quillmere::platform
