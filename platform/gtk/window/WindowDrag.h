#pragma once

#include "platform/gtk/glib/Signals.h"

#include <gtk/gtk.h>

namespace quillmere::platform::gtk {

/// Moves the window with the pointer when the page asks for it. The page's message comes some time after the press,
/// maybe after the release, so the pointer is followed natively and a move starts only while the button is really down
/// and the pointer has left the place: a window manager that is asked later would stick to the pointer.
///
/// Such a press that is the second of a double click zooms the window, as on any title bar.
class WindowDrag {
public:
    explicit WindowDrag(GtkWindow* window) : window_(window) {}

    /// Follows the pointer on this widget for as long as it lives.
    void track(GtkWidget* widget);
    /// The page asks to move the window with the press that it has seen.
    void arm();

private:
    struct Press {
        GObjectRef<GdkDevice> device;
        guint button = 0;
        double x = 0, y = 0; // of the surface
        guint32 time = 0;
    };
    void pressed(GdkEvent* event);
    void moved(GdkEvent* event);
    void released();
    void zoom();

    GtkWindow* window_;
    SignalConnection events_;
    Press press_;
    bool down_ = false;
    bool armed_ = false;         // the page asked during this press
    bool previousArmed_ = false; // and during the press before
    bool secondPress_ = false;   // of a double click
    bool zoomOnRelease_ = false;
};

} // namespace quillmere::platform::gtk
