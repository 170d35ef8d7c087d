#pragma once

#include "platform/gtk/glib/Signals.h"

#include <gtk/gtk.h>

#include <optional>

namespace quillmere::platform::gtk {

/// What stands at the leading end of the title strip: the window's controls, which go in full screen, and the button of
/// the main menu, which stays. Main thread only.
class TitleControls {
public:
    explicit TitleControls(GtkOverlay* body);

    void setMenu(GMenuModel* menu);
    void toggleMenu();
    void setFullScreen(bool fullScreen);
    /// Whether this widget belongs to the open menu or its button.
    bool holds(GtkWidget* widget) const;

private:
    GtkWidget* controls_; // owned by the overlay, as is the button
    GtkMenuButton* menu_;
};

/// Asks for full screen and back. A desktop takes a while to answer, so a second request within that time means the
/// opposite of the first, not of what is still shown. Main thread only.
class FullScreenSwitch {
public:
    explicit FullScreenSwitch(GtkWindow* window) : window_(window) {}

    void toggle();
    /// The desktop has answered.
    void changed(bool fullScreen);

private:
    GtkWindow* window_;
    std::optional<bool> asked_; // not answered yet
    LoopTimer patience_;        // a desktop may refuse
};

} // namespace quillmere::platform::gtk
