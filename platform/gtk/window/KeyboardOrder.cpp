#include "platform/gtk/window/KeyboardOrder.h"

#include "platform/gtk/glib/Signals.h"

namespace quillmere::platform::gtk {

void repairTabOrder(GtkWindow* window, GtkWidget* webView) {
    for (auto* child = gtk_widget_get_first_child(webView); child; child = gtk_widget_get_next_sibling(child))
        if (GTK_IS_TEXT_VIEW(child))
            gtk_widget_set_can_focus(child, FALSE);

    GtkEventController* keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    const auto lastTab = std::make_shared<guint32>(0);
    connectForLife(
        keys, "key-pressed",
        [lastTab, window, webView](GtkEventControllerKey* controller, guint key, guint, GdkModifierType) -> gboolean {
            if (key != GDK_KEY_Tab && key != GDK_KEY_ISO_Left_Tab && key != GDK_KEY_KP_Tab)
                return FALSE;
            const guint32 time = gtk_event_controller_get_current_event_time(GTK_EVENT_CONTROLLER(controller));
            gtk_window_set_focus_visible(window, TRUE);
            const bool again = std::exchange(*lastTab, time) == time && time != 0;
            return again && gtk_window_get_focus(window) != webView;
        });
    gtk_widget_add_controller(GTK_WIDGET(window), keys);
}

} // namespace quillmere::platform::gtk
