#include "platform/gtk/web/PageTitle.h"

#include <algorithm>
#include <cstring>
#include <gdk/x11/gdkx.h>

namespace quillmere::platform::gtk {

namespace {

// Well under what a server takes in one request.
constexpr size_t longestTitle = 200'000;

void publish(WebKitWebView* view) {
    const char* title = webkit_web_view_get_title(view);
    GtkNative* native = gtk_widget_get_native(GTK_WIDGET(view));
    GdkSurface* surface = native ? gtk_native_get_surface(native) : nullptr;
    if (!title || !surface || !GDK_IS_X11_SURFACE(surface))
        return;
    auto* display = gdk_surface_get_display(surface);
    const auto length = static_cast<int>(std::min(std::strlen(title), longestTitle));
    XChangeProperty(gdk_x11_display_get_xdisplay(display), gdk_x11_surface_get_xid(surface),
                    gdk_x11_get_xatom_by_name_for_display(display, "_QUILLMERE_PAGE_TITLE"),
                    gdk_x11_get_xatom_by_name_for_display(display, "UTF8_STRING"), 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(title), length);
    XFlush(gdk_x11_display_get_xdisplay(display));
}

} // namespace

SignalConnections publishPageTitle(WebKitWebView* view) {
    SignalConnections connections;
    connections.push_back(connect(view, "notify::title", [view](WebKitWebView*, GParamSpec*) { publish(view); }));
    // The page may have spoken before the window was on the screen.
    connections.push_back(connect(view, "map", [view](WebKitWebView*) { publish(view); }));
    return connections;
}

} // namespace quillmere::platform::gtk
