#pragma once

#include "base/FileUrl.h"
#include "platform/view/View.h"

#include <memory>
#include <optional>
#include <string>

namespace quillmere::platform {

/// How the window is made. All sizes in points.
struct WindowSpec {
    view::Size contentSize{};
    view::Size minimumSize{};
    std::string title;
    std::string autosaveName; // the size is kept in the user's defaults under this name
    bool titleHidden = false;
    bool titleBarTransparent = false;
    bool opaque = true;
};

/// What the window tells its delegate, on the main thread.
class WindowClient {
public:
    virtual ~WindowClient() = default;
    virtual void windowDidEnterFullScreen() = 0;
    virtual void windowDidExitFullScreen() = 0;
    virtual void windowDidBecomeKey() = 0;
    virtual void windowDidResignKey() = 0;
};

/// The one window. Main thread only. Closing it ends the application when its client says so.
class Window {
public:
    virtual ~Window() = default;
    virtual void setClient(std::weak_ptr<WindowClient> client) = 0;
    /// The root of the content, mounted once; the tree may change afterwards.
    virtual void setContent(view::ViewRef content) = 0;
    virtual void setTitle(std::string title) = 0;
    /// The file that the window stands for; none when it stands for no file.
    virtual void setRepresentedFile(std::optional<FileUrl> file) = 0;
    virtual void center() = 0;
    virtual void makeKeyAndOrderFront() = 0;
    virtual bool isFullScreen() const = 0;
    virtual void toggleFullScreen() = 0;
    virtual void miniaturize() = 0;
    /// As if the close button had been pressed.
    virtual void performClose() = 0;
    /// Moves the window with the pointer if a button is held down now; else nothing.
    virtual void performDrag() = 0;
    /// The height of the content, in points.
    virtual double contentHeight() const = 0;
    /// The height that windows may take on the screen where this one stands; none when it stands on no screen.
    virtual std::optional<double> screenHeight() const = 0;
    /// Shows content on a surface of its own below this view of the window, which has been mounted. It closes when the
    /// user works on in this window, not when in another one. One at a time: an earlier one closes.
    virtual void showPopover(view::ViewRef content, const view::ViewRef& anchor) = 0;
    virtual void closePopover() = 0;
    virtual bool isPopoverShown() const = 0;
};

} // namespace quillmere::platform
