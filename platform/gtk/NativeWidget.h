#pragma once

#include "platform/gtk/GObjectRef.h"
#include "platform/view/View.h"

#include <gtk/gtk.h>

namespace quillmere::platform::gtk {

/// A widget of its own behind a `Native` view: the renderer places it, its maker knows the rest. Main thread only.
class NativeWidget final : public view::NativeView {
public:
    explicit NativeWidget(GtkWidget* widget) : widget_(GObjectRef<GtkWidget>::retain(widget)) {}
    GtkWidget* widget() const noexcept { return widget_.get(); }

private:
    GObjectRef<GtkWidget> widget_;
};

} // namespace quillmere::platform::gtk
