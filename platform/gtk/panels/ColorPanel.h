#pragma once

#include "platform/Dialogs.h"
#include "platform/gtk/glib/Signals.h"

#include <gtk/gtk.h>

namespace quillmere::platform::gtk {

/// The colour dialog: stays open beside the window and tells of every step of the choice. Main thread only.
class ColorPanel {
public:
    ColorPanel(GtkWindow* parent, ColorPanelSpec spec);
    ~ColorPanel();
    ColorPanel(const ColorPanel&) = delete;
    ColorPanel& operator=(const ColorPanel&) = delete;

private:
    void report();

    GObjectRef<GtkWindow> dialog_;
    std::function<void(view::Color)> onChange_;
    view::Color reported_;
    SignalConnections connections_;
    LoopTimer reporting_;
};

} // namespace quillmere::platform::gtk
