#include "platform/gtk/window/TitleControls.h"

#include "platform/gtk/view/ViewWidgets.h"

namespace quillmere::platform::gtk {

namespace {

constexpr std::chrono::seconds answerLimit{1};

GtkWidget* makeControls() {
    GtkWidget* controls = gtk_window_controls_new(GTK_PACK_START);
    gtk_window_controls_set_decoration_layout(GTK_WINDOW_CONTROLS(controls), "close,minimize,maximize:");
    return controls;
}

GtkMenuButton* makeMenuButton() {
    GtkWidget* button = gtk_menu_button_new();
    gtk_widget_add_css_class(button, "quillmere-menu");
    gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
    gtk_menu_button_set_icon_name(GTK_MENU_BUTTON(button), symbolIconName("menu").c_str());
    gtk_widget_set_tooltip_text(button, "Main Menu (F10)");
    gtk_accessible_update_property(GTK_ACCESSIBLE(button), GTK_ACCESSIBLE_PROPERTY_LABEL, "Main menu", -1);
    return GTK_MENU_BUTTON(button);
}

} // namespace

TitleControls::TitleControls(GtkOverlay* body) : controls_(makeControls()), menu_(makeMenuButton()) {
    GtkWidget* strip = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 2);
    gtk_widget_add_css_class(strip, "title-controls");
    gtk_widget_set_halign(strip, GTK_ALIGN_START);
    gtk_widget_set_valign(strip, GTK_ALIGN_START);
    gtk_box_append(GTK_BOX(strip), controls_);
    gtk_box_append(GTK_BOX(strip), GTK_WIDGET(menu_));
    gtk_overlay_add_overlay(body, strip);
}

void TitleControls::setMenu(GMenuModel* menu) {
    gtk_menu_button_set_menu_model(menu_, menu);
    if (GtkPopover* popover = gtk_menu_button_get_popover(menu_)) {
        gtk_popover_set_has_arrow(popover, FALSE);
        gtk_widget_set_halign(GTK_WIDGET(popover), GTK_ALIGN_START);
    }
}

void TitleControls::toggleMenu() {
    GtkPopover* popover = gtk_menu_button_get_popover(menu_);
    if (!popover)
        return;
    if (gtk_widget_get_visible(GTK_WIDGET(popover)))
        gtk_menu_button_popdown(menu_);
    else
        gtk_menu_button_popup(menu_);
}

void TitleControls::setFullScreen(bool fullScreen) {
    gtk_widget_set_visible(controls_, !fullScreen);
}

bool TitleControls::holds(GtkWidget* widget) const {
    return gtk_widget_is_ancestor(widget, GTK_WIDGET(menu_));
}

void FullScreenSwitch::toggle() {
    const bool wanted = !asked_.value_or(gtk_window_is_fullscreen(window_));
    asked_ = wanted;
    patience_.after(answerLimit, [this] { asked_.reset(); });
    wanted ? gtk_window_fullscreen(window_) : gtk_window_unfullscreen(window_);
}

void FullScreenSwitch::changed(bool fullScreen) {
    if (asked_ == fullScreen) {
        asked_.reset();
        patience_.cancel();
    }
}

} // namespace quillmere::platform::gtk
