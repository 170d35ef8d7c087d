#include "platform/gtk/window/PopoverHost.h"

#include "platform/gtk/view/TextScale.h"

#include <memory>
#include <string_view>

namespace quillmere::platform::gtk {

namespace {

constexpr double gap = 4; // between the anchor and the surface

} // namespace

PopoverHost::PopoverHost(GtkWindow* window, GtkOverlay* body) : window_(window), renderer_(*this) {
    closeOnPress(body);
    takeKeys(GTK_WIDGET(window));
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

// Keys go up no further than the popover while it has the focus, so both have to look out for them. The toolkit would
// keep the application's keys from it, too.
void PopoverHost::takeKeys(GtkWidget* widget) {
    GtkEventController* keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    connectForLife(keys, "key-pressed",
                   [this, widget](GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers) -> gboolean {
                       if (!isShown())
                           return FALSE;
                       if (key != GDK_KEY_Escape)
                           return widget == popover_.get() && performAccelerator(key, modifiers);
                       close();
                       return TRUE;
                   });
    gtk_widget_add_controller(widget, keys);
}

bool PopoverHost::performAccelerator(guint key, GdkModifierType modifiers) const {
    GtkApplication* application = gtk_window_get_application(window_);
    const auto relevant = static_cast<GdkModifierType>(modifiers & gtk_accelerator_get_default_mod_mask());
    const GlibText name(gtk_accelerator_name(key, relevant));
    const std::unique_ptr<char*, decltype(&g_strfreev)> actions(
        application ? gtk_application_get_actions_for_accel(application, name.get()) : nullptr, g_strfreev);
    constexpr std::string_view scope = "app.";
    const char* action = actions ? *actions : nullptr;
    if (!action || !std::string_view(action).starts_with(scope))
        return false;
    g_action_group_activate_action(G_ACTION_GROUP(application), action + scope.size(), nullptr);
    return true;
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
    // Without a compositor what is not painted is black.
    if (!gdk_display_is_composited(gtk_widget_get_display(anchor)))
        gtk_widget_add_css_class(popover, "solid");
    if (!label.empty())
        gtk_accessible_update_property(GTK_ACCESSIBLE(popover), GTK_ACCESSIBLE_PROPERTY_LABEL, label.c_str(), -1);
    gtk_popover_set_child(bubble, widget.get());
    gtk_popover_set_autohide(bubble, FALSE);
    gtk_popover_set_has_arrow(bubble, FALSE);
    gtk_popover_set_position(bubble, GTK_POS_BOTTOM);
    gtk_popover_set_offset(bubble, 0, scaled(gap));
    gtk_widget_set_halign(popover, GTK_ALIGN_END); // or it would hang out of the window
    takeKeys(popover);
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
