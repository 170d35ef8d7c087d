#include "platform/gtk/window/WindowDrag.h"

#include <cmath>

namespace quillmere::platform::gtk {

void WindowDrag::track(GtkWidget* widget) {
    GtkEventController* controller = gtk_event_controller_legacy_new();
    // Before the web view's own gestures, which claim the pointer for the page.
    gtk_event_controller_set_propagation_phase(controller, GTK_PHASE_CAPTURE);
    events_ = connect(controller, "event", [this](GtkEventControllerLegacy*, GdkEvent* event) -> gboolean {
        const auto type = gdk_event_get_event_type(event);
        if (type == GDK_BUTTON_PRESS)
            pressed(event);
        else if (type == GDK_MOTION_NOTIFY)
            moved(event);
        else if (type == GDK_BUTTON_RELEASE)
            released();
        return FALSE;
    });
    gtk_widget_add_controller(widget, controller);
}

void WindowDrag::pressed(GdkEvent* event) {
    Press press{.device = GObjectRef<GdkDevice>::share(gdk_event_get_device(event)),
                .button = gdk_button_event_get_button(event),
                .time = gdk_event_get_time(event)};
    gdk_event_get_position(event, &press.x, &press.y);

    int interval = 0, distance = 0;
    g_object_get(gtk_widget_get_settings(GTK_WIDGET(window_)), "gtk-double-click-time", &interval,
                 "gtk-double-click-distance", &distance, nullptr);
    secondPress_ = !secondPress_ && press.button == 1 && press_.button == 1 &&
                   press.time - press_.time <= static_cast<guint32>(interval) &&
                   std::abs(press.x - press_.x) <= distance && std::abs(press.y - press_.y) <= distance;
    press_ = std::move(press);
    down_ = true;
    armed_ = zoomOnRelease_ = false;
}

void WindowDrag::moved(GdkEvent* event) {
    if (!down_ || !armed_)
        return;
    double x = 0, y = 0;
    gdk_event_get_position(event, &x, &y);
    if (!gtk_drag_check_threshold(GTK_WIDGET(window_), static_cast<int>(press_.x), static_cast<int>(press_.y),
                                  static_cast<int>(x), static_cast<int>(y)))
        return;
    down_ = armed_ = zoomOnRelease_ = false; // the window manager keeps the release
    if (gtk_window_is_fullscreen(window_))
        return;
    GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window_));
    gdk_toplevel_begin_move(GDK_TOPLEVEL(surface), press_.device.get(), static_cast<int>(press_.button), press_.x,
                            press_.y, gdk_event_get_time(event));
}

void WindowDrag::released() {
    down_ = false;
    if (std::exchange(zoomOnRelease_, false))
        zoom();
}

void WindowDrag::arm() {
    if (press_.button != 1)
        return;
    armed_ = true;
    if (!std::exchange(secondPress_, false))
        return;
    if (down_)
        zoomOnRelease_ = true;
    else
        zoom();
}

void WindowDrag::zoom() {
    char* setting = nullptr;
    g_object_get(gtk_widget_get_settings(GTK_WIDGET(window_)), "gtk-titlebar-double-click", &setting, nullptr);
    const GlibText wish(setting);
    if (gtk_window_is_fullscreen(window_) || g_strcmp0(wish.get(), "none") == 0)
        return;
    if (g_strcmp0(wish.get(), "minimize") == 0)
        gtk_window_minimize(window_);
    else if (gtk_window_is_maximized(window_))
        gtk_window_unmaximize(window_);
    else
        gtk_window_maximize(window_);
}

} // namespace quillmere::platform::gtk
