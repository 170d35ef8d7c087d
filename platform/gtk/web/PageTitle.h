#pragma once

#include "platform/gtk/glib/Signals.h"

#include <webkit/webkit.h>

namespace quillmere::platform::gtk {

/// Repeats the page's document title in the X11 property "_QUILLMERE_PAGE_TITLE" (UTF8_STRING) of the window that holds
/// the view, so that scripts can see from outside what the page shows. Elsewhere it does nothing. Main thread only.
SignalConnections publishPageTitle(WebKitWebView* view);

} // namespace quillmere::platform::gtk
