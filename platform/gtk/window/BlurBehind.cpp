#include "platform/gtk/window/BlurBehind.h"

#include <X11/Xatom.h>

#include <cmath>
#include <gdk/x11/gdkx.h>
#include <memory>
#include <span>

namespace quillmere::platform::gtk {

namespace {

constexpr const char* regionName = "_KDE_NET_WM_BLUR_BEHIND_REGION";

struct XDelete {
    void operator()(void* memory) const noexcept { XFree(memory); }
};

/// Window managers that blur announce it by a property of this name on the root window.
bool isAnnounced(GdkDisplay* display) {
    Display* connection = gdk_x11_display_get_xdisplay(display);
    int count = 0;
    const std::unique_ptr<Atom, XDelete> names(
        XListProperties(connection, gdk_x11_display_get_xrootwindow(display), &count));
    const Atom wanted = gdk_x11_get_xatom_by_name_for_display(display, regionName);
    for (const Atom name : std::span(names.get(), names ? static_cast<size_t>(count) : 0))
        if (name == wanted)
            return true;
    return false;
}

} // namespace

bool fillsItsPlace(GdkToplevelState state) {
    constexpr unsigned filling = GDK_TOPLEVEL_STATE_MAXIMIZED | GDK_TOPLEVEL_STATE_FULLSCREEN |
                                 GDK_TOPLEVEL_STATE_TILED | GDK_TOPLEVEL_STATE_TOP_TILED |
                                 GDK_TOPLEVEL_STATE_BOTTOM_TILED | GDK_TOPLEVEL_STATE_LEFT_TILED |
                                 GDK_TOPLEVEL_STATE_RIGHT_TILED;
    return (static_cast<unsigned>(state) & filling) != 0;
}

bool BlurBehind::isOffered() const {
    GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window_));
    if (!surface || !GDK_IS_X11_SURFACE(surface) || fillsItsPlace(gdk_toplevel_get_state(GDK_TOPLEVEL(surface))))
        return false;
    GdkDisplay* display = gdk_surface_get_display(surface);
    return gdk_display_is_composited(display) && isAnnounced(display);
}

void BlurBehind::ask(GtkWidget* content) const {
    GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window_));
    graphene_rect_t bounds{};
    if (!surface || !GDK_IS_X11_SURFACE(surface) || !gtk_widget_compute_bounds(content, GTK_WIDGET(window_), &bounds))
        return;
    GdkDisplay* display = gdk_surface_get_display(surface);
    Display* connection = gdk_x11_display_get_xdisplay(display);
    const auto window = gdk_x11_surface_get_xid(surface);
    const Atom name = gdk_x11_get_xatom_by_name_for_display(display, regionName);
    if (!isOffered()) {
        XDeleteProperty(connection, window, name);
        return;
    }
    double left = 0, top = 0;
    gtk_native_get_surface_transform(GTK_NATIVE(window_), &left, &top);
    const int scale = gdk_surface_get_scale_factor(surface);
    const auto pixels = [scale](double points) { return std::lround(points * scale); };
    const long region[] = {
        pixels(static_cast<double>(bounds.origin.x) + left), pixels(static_cast<double>(bounds.origin.y) + top),
        pixels(static_cast<double>(bounds.size.width)), pixels(static_cast<double>(bounds.size.height))};
    XChangeProperty(connection, window, name, XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(region), 4);
}

} // namespace quillmere::platform::gtk
