#pragma once

#include "platform/WebView.h"
#include "platform/gtk/glib/GObjectRef.h"

#include <webkit/webkit.h>

namespace quillmere::platform::gtk {

/// A context that speaks the user's languages; the page would be told "C" where the locale is that one.
GObjectRef<WebKitWebContext> makeWebContext();
/// A session that keeps nothing and uses no proxy.
GObjectRef<WebKitNetworkSession> makeWebSession();
/// The widget, transparent and without whatever a viewer of local files does not need.
GObjectRef<WebKitWebView> makeWebWidget(const WebViewConfiguration& configuration, WebKitWebContext* context,
                                        WebKitNetworkSession* session, WebKitUserContentManager* content);
/// Where the engine draws without compositing, a transparent page keeps the pixels of what it showed before; so it gets
/// this colour as its opaque ground. Elsewhere, and for any other widget, nothing.
void groundPage(GtkWidget* web, const view::Color& tint);
/// Leaves copying and selecting in the context menu.
void trimContextMenu(WebKitContextMenu* menu, WebKitHitTestResult* place);

} // namespace quillmere::platform::gtk
