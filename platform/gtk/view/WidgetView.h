#pragma once

#include "platform/view/View.h"

#include <gtk/gtk.h>

namespace quillmere::platform::gtk {

/// What stands behind a `Native` view of this backend: a widget that its owner made. The renderer puts it into the
/// window and adds what the window needs of it (pointer tracking for window drags, keyboard order).
class WidgetView : public view::NativeView {
public:
    virtual GtkWidget* widget() = 0;
};

} // namespace quillmere::platform::gtk
