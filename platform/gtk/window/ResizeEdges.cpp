#include "platform/gtk/window/ResizeEdges.h"

namespace quillmere::platform::gtk {

namespace {

constexpr int edgeThickness = 4;
constexpr int cornerSize = 10;

} // namespace

ResizeEdges::ResizeEdges(GtkWindow* window, GtkOverlay* body) : window_(window) {
    add(body, GDK_SURFACE_EDGE_NORTH, GTK_ALIGN_FILL, GTK_ALIGN_START, "n-resize");
    add(body, GDK_SURFACE_EDGE_SOUTH, GTK_ALIGN_FILL, GTK_ALIGN_END, "s-resize");
    add(body, GDK_SURFACE_EDGE_WEST, GTK_ALIGN_START, GTK_ALIGN_FILL, "w-resize");
    add(body, GDK_SURFACE_EDGE_EAST, GTK_ALIGN_END, GTK_ALIGN_FILL, "e-resize");
    add(body, GDK_SURFACE_EDGE_NORTH_WEST, GTK_ALIGN_START, GTK_ALIGN_START, "nw-resize");
    add(body, GDK_SURFACE_EDGE_NORTH_EAST, GTK_ALIGN_END, GTK_ALIGN_START, "ne-resize");
    add(body, GDK_SURFACE_EDGE_SOUTH_WEST, GTK_ALIGN_START, GTK_ALIGN_END, "sw-resize");
    add(body, GDK_SURFACE_EDGE_SOUTH_EAST, GTK_ALIGN_END, GTK_ALIGN_END, "se-resize");
    for (const char* property : {"notify::css-classes", "notify::maximized", "notify::fullscreened"})
        connections_.push_back(connect(window, property, [this](GObject*, GParamSpec*) { update(); }));
    update();
}

void ResizeEdges::add(GtkOverlay* body, GdkSurfaceEdge edge, GtkAlign horizontal, GtkAlign vertical,
                      const char* cursor) {
    GtkWidget* strip = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
    gtk_widget_set_halign(strip, horizontal);
    gtk_widget_set_valign(strip, vertical);
    const bool corner = horizontal != GTK_ALIGN_FILL && vertical != GTK_ALIGN_FILL;
    const int size = corner ? cornerSize : edgeThickness;
    gtk_widget_set_size_request(strip, size, size);
    gtk_widget_set_cursor_from_name(strip, cursor);

    GtkGesture* click = gtk_gesture_click_new();
    gtk_gesture_single_set_button(GTK_GESTURE_SINGLE(click), GDK_BUTTON_PRIMARY);
    connectForLife(click, "pressed", [window = window_, edge](GtkGestureClick* gesture, int, double, double) {
        auto* controller = GTK_EVENT_CONTROLLER(gesture);
        GdkEvent* event = gtk_event_controller_get_current_event(controller);
        double x = 0, y = 0;
        if (!event || !gdk_event_get_position(event, &x, &y))
            return;
        gdk_toplevel_begin_resize(GDK_TOPLEVEL(gtk_native_get_surface(GTK_NATIVE(window))), edge,
                                  gdk_event_get_device(event), GDK_BUTTON_PRIMARY, x, y, gdk_event_get_time(event));
        gtk_event_controller_reset(controller); // the window manager keeps the release
    });
    gtk_widget_add_controller(strip, GTK_EVENT_CONTROLLER(click));
    gtk_overlay_add_overlay(body, strip);
    edges_.push_back(strip);
}

void ResizeEdges::update() {
    const bool wanted = gtk_widget_has_css_class(GTK_WIDGET(window_), "solid-csd") &&
                        !gtk_window_is_maximized(window_) && !gtk_window_is_fullscreen(window_);
    for (auto* edge : edges_)
        gtk_widget_set_visible(edge, wanted);
}

} // namespace quillmere::platform::gtk
