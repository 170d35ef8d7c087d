#pragma once

#include "platform/WebView.h"
#include "platform/gtk/glib/GObjectRef.h"

#include <gtk/gtk.h>

namespace quillmere::platform::gtk {

/// Lets the user drop local files from other programs on a web view's widget: attached once, it lives with the widget.
/// Drags of the page itself stay the page's, and links without a file behind them are refused.
void acceptFileDrops(GtkWidget* webView, const std::weak_ptr<WebViewClient>& client);

} // namespace quillmere::platform::gtk
