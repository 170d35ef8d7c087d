#pragma once

#include "platform/gtk/glib/Signals.h"

#include <webkit/webkit.h>

#include <string>

namespace quillmere::platform::gtk {

/// What the page says of itself to machines: which view stands and what is in it. The page tells it by the event
/// "page-status", whose detail is the text; its title is for people. On X11 the text is repeated in the property
/// "_QUILLMERE_PAGE_STATUS" (UTF8_STRING) of the window that holds the view, so that scripts can see from outside what
/// the page shows; elsewhere nothing happens. Main thread only.
class PageStatus {
public:
    /// To be made before the view, whose content manager this is.
    explicit PageStatus(WebKitUserContentManager* manager);

    void showIn(WebKitWebView* view);

private:
    void publish();

    std::string text_;
    GObjectWeak<WebKitWebView> view_;
    SignalConnections connections_;
};

} // namespace quillmere::platform::gtk
