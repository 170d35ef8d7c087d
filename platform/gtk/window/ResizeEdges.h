#pragma once

#include "platform/gtk/glib/Signals.h"

#include <gtk/gtk.h>

namespace quillmere::platform::gtk {

/// Edges and corners by which the pointer resizes the window, laid over its content. They are needed only where the
/// desktop takes no shadow around windows: there the toolkit's own edges would cost a visible frame.
class ResizeEdges {
public:
    ResizeEdges(GtkWindow* window, GtkOverlay* body);

private:
    void add(GtkOverlay* body, GdkSurfaceEdge edge, GtkAlign horizontal, GtkAlign vertical, const char* cursor);
    void update();

    GtkWindow* window_;
    std::vector<GtkWidget*> edges_; // owned by the overlay
    SignalConnections connections_;
};

} // namespace quillmere::platform::gtk
