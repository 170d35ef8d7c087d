#include "platform/gtk/window/PopoverHost.h"

#include "platform/gtk/view/TextScale.h"

namespace quillmere::platform::gtk {

namespace {

constexpr double gap = 4; // between the anchor and the surface

} // namespace

PopoverHost::PopoverHost(GtkWindow* window, GtkOverlay* body) : window_(window), renderer_(*this) {
    closeOnPress(body);
    closeOnEscape();
}

PopoverHost::~PopoverHost() {
    remove();
}

// The toolkit's own closing would grab all input, and with it the window's keys.
void PopoverHost::closeOnPress(GtkOverlay* body) {
    GtkGesture* press = gtk_gesture_click_new();
    gtk_gesture_single_set_button(GTK_GESTURE_SINGLE(press), 0);
    gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(press), GTK_PHASE_CAPTURE);
    connectForLife(press, "pressed", [this, body](GtkGestureClick*, int, double x, double y) {
        if (!isShown())
            return;
        // The anchor itself opens and closes.
        GtkWidget* pressed = gtk_widget_pick(GTK_WIDGET(body), x, y, GTK_PICK_DEFAULT);
        if (!pressed || (pressed != anchor_ && !gtk_widget_is_ancestor(pressed, anchor_)))
            close();
    });
    gtk_widget_add_controller(GTK_WIDGET(body), GTK_EVENT_CONTROLLER(press));
}

void PopoverHost::closeOnEscape() {
    escape_ = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(escape_, GTK_PHASE_CAPTURE);
    connectForLife(escape_, "key-pressed",
                   [this](GtkEventControllerKey*, guint key, guint, GdkModifierType) -> gboolean {
                       if (key != GDK_KEY_Escape || !isShown())
                           return FALSE;
                       close();
                       return TRUE;
                   });
    gtk_widget_add_controller(GTK_WIDGET(window_), escape_);
}

void PopoverHost::show(view::ViewRef content, GtkWidget* anchor) {
    remove();
    anchor_ = anchor;
    focusBefore_.set(gtk_window_get_focus(window_));
    const std::string label = content->accessibilityLabel;
    const auto widget = renderer_.mount(std::move(content));
    popover_ = GObjectRef<GtkWidget>::share(gtk_popover_new());
    GtkWidget* popover = popover_.get();
    auto* bubble = GTK_POPOVER(popover);
    gtk_widget_add_css_class(popover, "quillmere-popover");
    if (!label.empty())
        gtk_accessible_update_property(GTK_ACCESSIBLE(popover), GTK_ACCESSIBLE_PROPERTY_LABEL, label.c_str(), -1);
    gtk_popover_set_child(bubble, widget.get());
    gtk_popover_set_autohide(bubble, FALSE);
    gtk_popover_set_has_arrow(bubble, FALSE);
    gtk_popover_set_position(bubble, GTK_POS_BOTTOM);
    gtk_popover_set_offset(bubble, 0, scaled(gap));
    gtk_widget_set_halign(popover, GTK_ALIGN_END); // or it would hang out of the window
    gtk_widget_set_parent(popover, anchor);
    gtk_popover_popup(bubble);
    gtk_widget_child_focus(popover, GTK_DIR_TAB_FORWARD);
}

void PopoverHost::close() {
    if (!isShown())
        return;
    GtkWidget* focus = gtk_window_get_focus(window_);
    const bool hadFocus = focus && gtk_widget_is_ancestor(focus, popover_.get());
    gtk_popover_popdown(GTK_POPOVER(popover_.get()));
    if (const auto before = focusBefore_.lock(); hadFocus && before)
        gtk_widget_grab_focus(before.get());
    // Later: it may be one of its own controls that closes it.
    removing_.after(std::chrono::milliseconds{0}, [this] { remove(); });
}

bool PopoverHost::isShown() const {
    return popover_ && gtk_widget_get_visible(popover_.get());
}

void PopoverHost::remove() {
    removing_.cancel();
    if (!popover_)
        return;
    renderer_.unmount();
    if (gtk_widget_get_parent(popover_.get()))
        gtk_widget_unparent(popover_.get());
    popover_ = {};
}

} // namespace quillmere::platform::gtk
