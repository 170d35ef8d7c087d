#pragma once

#include <gtk/gtk.h>

namespace quillmere::platform::gtk {

/// Lets Tab travel from the page to the native buttons and back. The web view hands an unused Tab back to the window as
/// a second event, which would skip a button, and it has an invisible text field in which Tab would end.
void repairTabOrder(GtkWindow* window, GtkWidget* webView);

} // namespace quillmere::platform::gtk
