#include "platform/gtk/panels/SheetHost.h"

#include "platform/gtk/view/TextScale.h"
#include "platform/gtk/view/ViewWidgets.h"

namespace quillmere::platform::gtk {

namespace {

constexpr int cardWidth = 360;

GtkWidget* makeLabel(const std::string& text, const char* style) {
    GtkWidget* label = gtk_label_new(text.c_str());
    gtk_widget_add_css_class(label, style);
    gtk_label_set_wrap(GTK_LABEL(label), TRUE);
    gtk_label_set_wrap_mode(GTK_LABEL(label), PANGO_WRAP_WORD_CHAR);
    gtk_label_set_max_width_chars(GTK_LABEL(label), 1); // as wide as the card, no wider
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    return label;
}

void addShortcut(GtkEventController* shortcuts, guint key, GtkWidget* button) {
    // The signal, not the widget's activation: that one shows a pressed button for a while before it acts.
    const auto press = +[](GtkWidget*, GVariant*, gpointer data) -> gboolean {
        g_signal_emit_by_name(data, "clicked");
        return TRUE;
    };
    gtk_shortcut_controller_add_shortcut(
        GTK_SHORTCUT_CONTROLLER(shortcuts),
        gtk_shortcut_new(gtk_keyval_trigger_new(key, GdkModifierType{}),
                         gtk_callback_action_new(press, g_object_ref(button), g_object_unref)));
}

GtkEventController* makeShortcuts() {
    GtkEventController* shortcuts = gtk_shortcut_controller_new();
    gtk_shortcut_controller_set_scope(GTK_SHORTCUT_CONTROLLER(shortcuts), GTK_SHORTCUT_SCOPE_GLOBAL);
    gtk_event_controller_set_propagation_phase(shortcuts, GTK_PHASE_CAPTURE);
    return shortcuts;
}

} // namespace

void SheetHost::present(AlertSpec alert, Completion completion) {
    if (alert.buttons.empty())
        alert.buttons = {"OK"};
    requests_.push_back({std::move(alert), std::move(completion)});
    if (!isShowing() && !answering_.pending())
        showNext();
}

void SheetHost::showNext() {
    if (requests_.empty() || isShowing())
        return;
    GtkWidget* card = makeCard();
    GtkWidget* first = addButtons(card);
    showCard(card);
    gtk_widget_grab_focus(first);
}

void SheetHost::showCard(GtkWidget* card) {
    focusBefore_.set(gtk_window_get_focus(window_));
    setRestFocusable(false);

    scrim_ = gtk_overlay_new();
    gtk_widget_add_css_class(scrim_, "quillmere-scrim");
    gtk_overlay_set_child(GTK_OVERLAY(scrim_), gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0));
    GtkGesture* click = gtk_gesture_click_new();
    gtk_gesture_single_set_button(GTK_GESTURE_SINGLE(click), 0);
    connectForLife(click, "pressed", [](GtkGestureClick* gesture, int, double, double) {
        gtk_gesture_set_state(GTK_GESTURE(gesture), GTK_EVENT_SEQUENCE_CLAIMED);
    });
    gtk_widget_add_controller(scrim_, GTK_EVENT_CONTROLLER(click));
    gtk_widget_set_halign(card, GTK_ALIGN_CENTER);
    gtk_widget_set_valign(card, GTK_ALIGN_CENTER);
    gtk_overlay_add_overlay(GTK_OVERLAY(scrim_), card);
    gtk_overlay_add_overlay(body_, scrim_);
}

void SheetHost::removeCard() {
    gtk_overlay_remove_overlay(body_, std::exchange(scrim_, nullptr));
    setRestFocusable(true);
    if (const auto focus = focusBefore_.lock())
        gtk_widget_grab_focus(focus.get());
}

void SheetHost::beginPanel(const SheetSpec& panel) {
    if (isBusy())
        return;
    GtkWidget* card = makeBox(GTK_ORIENTATION_HORIZONTAL, GTK_ACCESSIBLE_ROLE_DIALOG);
    gtk_widget_add_css_class(card, "quillmere-panel");
    gtk_widget_set_size_request(card, scaled(panel.contentSize.width), scaled(panel.contentSize.height));
    gtk_accessible_update_property(GTK_ACCESSIBLE(card), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                   panel.content->accessibilityLabel.c_str(), GTK_ACCESSIBLE_PROPERTY_MODAL, TRUE, -1);
    isPanel_ = true;
    const auto content = renderer_.mount(panel.content);
    gtk_widget_set_hexpand(content.get(), TRUE);
    gtk_box_append(GTK_BOX(card), content.get());
    addPanelKeys(card, panel.content);
    showCard(card);
    gtk_widget_child_focus(card, GTK_DIR_TAB_FORWARD);
}

void SheetHost::addPanelKeys(GtkWidget* card, const view::ViewRef& content) {
    if (const auto* button = std::get_if<view::Button>(&content->kind()))
        if (GtkWidget* widget = renderer_.widgetOf(*content); widget && button->key != view::ButtonKey::none) {
            GtkEventController* shortcuts = makeShortcuts();
            const bool isEscape = button->key == view::ButtonKey::escape;
            addShortcut(shortcuts, isEscape ? GDK_KEY_Escape : GDK_KEY_Return, widget);
            if (!isEscape)
                addShortcut(shortcuts, GDK_KEY_KP_Enter, widget);
            gtk_widget_add_controller(card, shortcuts);
        }
    for (const auto& child : content->children())
        addPanelKeys(card, child);
}

void SheetHost::endPanel() {
    if (!std::exchange(isPanel_, false))
        return;
    removeCard();
    renderer_.unmount();
    // An alert may have come meanwhile.
    answering_.after(std::chrono::milliseconds{0}, [this] { showNext(); });
}

GtkWidget* SheetHost::makeCard() {
    const auto& alert = requests_.front().alert;
    GtkWidget* card = GTK_WIDGET(g_object_new(GTK_TYPE_BOX, "orientation", GTK_ORIENTATION_VERTICAL, "spacing", 8,
                                              "accessible-role", GTK_ACCESSIBLE_ROLE_ALERT_DIALOG, nullptr));
    gtk_widget_add_css_class(card, "quillmere-card");
    gtk_widget_set_size_request(card, cardWidth, -1);
    gtk_accessible_update_property(GTK_ACCESSIBLE(card), GTK_ACCESSIBLE_PROPERTY_LABEL, alert.message.c_str(),
                                   GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, alert.informative.c_str(),
                                   GTK_ACCESSIBLE_PROPERTY_MODAL, TRUE, -1);
    gtk_box_append(GTK_BOX(card), makeLabel(alert.message, "title"));
    if (!alert.informative.empty())
        gtk_box_append(GTK_BOX(card), makeLabel(alert.informative, "text"));
    return card;
}

GtkWidget* SheetHost::addButtons(GtkWidget* card) {
    const auto& titles = requests_.front().alert.buttons;
    GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
    gtk_widget_set_halign(row, GTK_ALIGN_END);
    gtk_widget_set_margin_top(row, 12);
    gtk_box_append(GTK_BOX(card), row);
    GtkWidget* first = nullptr;
    GtkWidget* last = nullptr;
    for (size_t index = 0; index < titles.size(); ++index) {
        GtkWidget* button = gtk_button_new_with_label(titles[index].c_str());
        connectForLife(button, "clicked", [this, index](GtkButton*) { choose(index); });
        gtk_box_prepend(GTK_BOX(row), button); // the default button stands last in the row
        if (index == 0) {
            gtk_widget_add_css_class(button, "suggested");
            first = button;
        }
        last = button;
    }
    addKeys(card, first, last);
    return first;
}

void SheetHost::addKeys(GtkWidget* card, GtkWidget* first, GtkWidget* last) {
    GtkEventController* shortcuts = makeShortcuts();
    addShortcut(shortcuts, GDK_KEY_Return, first);
    addShortcut(shortcuts, GDK_KEY_KP_Enter, first);
    addShortcut(shortcuts, GDK_KEY_Escape, last);
    gtk_widget_add_controller(card, shortcuts);
}

void SheetHost::choose(size_t button) {
    if (!scrim_)
        return;
    removeCard();
    auto request = std::move(requests_.front());
    requests_.pop_front();
    // Not inside the button's own signal: the button goes with the card.
    answering_.after(std::chrono::milliseconds{0}, [this, button, completion = std::move(request.completion)] {
        showNext();
        if (completion)
            completion(button);
    });
}

void SheetHost::setRestFocusable(bool focusable) {
    if (focusable) {
        for (auto* widget : std::exchange(silenced_, {}))
            if (gtk_widget_get_parent(widget) == GTK_WIDGET(body_))
                gtk_widget_set_can_focus(widget, TRUE);
        return;
    }
    for (auto* child = gtk_widget_get_first_child(GTK_WIDGET(body_)); child; child = gtk_widget_get_next_sibling(child))
        if (gtk_widget_get_can_focus(child)) {
            gtk_widget_set_can_focus(child, FALSE);
            silenced_.push_back(child);
        }
}

} // namespace quillmere::platform::gtk
