#include "platform/gtk/view/ViewWidgets.h"

#include "platform/gtk/desktop/DesktopMenu.h"
#include "platform/gtk/glib/Signals.h"
#include "platform/gtk/view/StyleSheet.h"
#include "platform/gtk/view/TextScale.h"

namespace quillmere::platform::gtk {

namespace {

constexpr int symbolSize = 20;
constexpr double smallSymbolSize = 16;
constexpr double symbolGap = 6;
constexpr const char* titleKey = "quillmere-title";

int cssWeight(view::Weight weight) {
    switch (weight) {
    case view::Weight::regular:
        return 400;
    case view::Weight::medium:
        return 500;
    case view::Weight::semibold:
        return 600;
    }
    return 400;
}

GtkWidget* makeSymbol(const std::string& symbol, double size) {
    GtkWidget* image = gtk_image_new_from_icon_name(symbolIconName(symbol).c_str());
    gtk_image_set_pixel_size(GTK_IMAGE(image), scaled(size));
    return image;
}

/// Symbol and title beside one another; a title alone without a symbol.
GtkWidget* makeTitle(GtkWidget* button, const view::Button& facts) {
    GtkWidget* title = gtk_label_new(facts.title.c_str());
    g_object_set_data(G_OBJECT(button), titleKey, title);
    if (facts.symbol.empty())
        return title;
    GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, scaled(symbolGap));
    GtkWidget* symbol = makeSymbol(facts.symbol, smallSymbolSize);
    if (!facts.symbolLabel.empty())
        gtk_accessible_update_property(GTK_ACCESSIBLE(symbol), GTK_ACCESSIBLE_PROPERTY_LABEL, facts.symbolLabel.c_str(),
                                       -1);
    gtk_box_append(GTK_BOX(row), symbol);
    gtk_box_append(GTK_BOX(row), title);
    return row;
}

const char* styleClass(view::ButtonStyle style) {
    switch (style) {
    case view::ButtonStyle::borderless:
        return "quillmere-symbol";
    case view::ButtonStyle::rounded:
        return "quillmere-button";
    case view::ButtonStyle::inlineBezel:
        return "quillmere-inline";
    }
    return "";
}

} // namespace

std::string symbolIconName(const std::string& symbol) {
    // With a name of our own, or the desktop's icon theme would come first; the ending has it coloured like text.
    return "quillmere-" + symbol + "-symbolic";
}

GtkWidget* makeBox(GtkOrientation orientation, GtkAccessibleRole role) {
    return GTK_WIDGET(g_object_new(GTK_TYPE_BOX, "orientation", orientation, "accessible-role", role, nullptr));
}

GtkWidget* makeLabel(const view::Label& facts) {
    GtkWidget* label = gtk_label_new(facts.text.c_str());
    const bool isCentred = facts.alignment == view::Alignment::center;
    gtk_label_set_xalign(GTK_LABEL(label), isCentred ? 0.5F : 0);
    if (isCentred) { // a paragraph, as wide as its view and no wider
        gtk_label_set_wrap(GTK_LABEL(label), TRUE);
        gtk_label_set_justify(GTK_LABEL(label), GTK_JUSTIFY_CENTER);
        gtk_label_set_max_width_chars(GTK_LABEL(label), 1);
    }
    gtk_widget_add_css_class(label, facts.color == view::TextColor::secondary ? "quillmere-second" : "quillmere-label");
    WidgetStyle(label).set("font-size: " + std::to_string(facts.fontSize) +
                           "px; font-weight: " + std::to_string(cssWeight(facts.weight)) + ";");
    return label;
}

GtkWidget* makeSymbol(const view::Symbol& facts, const std::optional<view::Size>& size) {
    GtkWidget* image = makeSymbol(facts.name, size ? size->width : symbolSize);
    gtk_widget_add_css_class(image, facts.color == view::TextColor::secondary ? "quillmere-second" : "quillmere-label");
    return image;
}

GtkWidget* makeSeparator() {
    GtkWidget* line = gtk_separator_new(GTK_ORIENTATION_HORIZONTAL);
    gtk_widget_add_css_class(line, "quillmere-separator");
    return line;
}

GtkWidget* makeScroll() {
    GtkWidget* scroll = gtk_scrolled_window_new();
    gtk_widget_add_css_class(scroll, "quillmere-scroll");
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroll), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
    return scroll;
}

GtkWidget* makeButton(const view::ViewRef& view, const view::Button& facts) {
    GtkWidget* button = gtk_button_new();
    gtk_widget_add_css_class(button, styleClass(facts.style));
    if (facts.key == view::ButtonKey::enter)
        gtk_widget_add_css_class(button, "suggested");
    if (facts.tint == view::ButtonTint::destructive)
        gtk_widget_add_css_class(button, "destructive");
    if (!facts.imageFile.empty()) {
        gtk_widget_add_css_class(button, "picture");
        if (GtkWidget* picture = makeThumbnail(facts.imageFile, view->size.value_or(view::Size{})))
            gtk_button_set_child(GTK_BUTTON(button), picture);
    } else if (!facts.title.empty()) {
        gtk_button_set_child(GTK_BUTTON(button), makeTitle(button, facts));
    } else {
        gtk_button_set_child(GTK_BUTTON(button), makeSymbol(facts.symbol, symbolSize));
    }
    if (!facts.tooltip.empty())
        gtk_widget_set_tooltip_text(button, withDesktopKeys(facts.tooltip).c_str());
    connectForLife(button, "clicked", [weak = std::weak_ptr(view)](GtkButton*) {
        if (const auto pressed = weak.lock())
            view::press(*pressed);
    });
    return button;
}

void setButtonTitle(GtkWidget* button, const std::string& title) {
    if (auto* label = static_cast<GtkLabel*>(g_object_get_data(G_OBJECT(button), titleKey)))
        gtk_label_set_text(label, title.c_str());
}

GtkWidget* makeSwitch(const view::ViewRef& view, const view::Switch& facts) {
    GtkWidget* control = gtk_switch_new();
    gtk_widget_add_css_class(control, "quillmere-switch");
    gtk_switch_set_active(GTK_SWITCH(control), facts.on);
    connectForLife(control, "notify::active", [weak = std::weak_ptr(view)](GObject* source, GParamSpec*) {
        if (const auto toggled = weak.lock())
            view::toggle(*toggled, gtk_switch_get_active(GTK_SWITCH(source)));
    });
    return control;
}

GtkWidget* makeSlider(const view::ViewRef& view, const view::Slider& facts) {
    const double range = facts.maximum - facts.minimum;
    GtkAdjustment* steps = gtk_adjustment_new(facts.value, facts.minimum, facts.maximum, range / 100, range / 10, 0);
    GtkWidget* scale = gtk_scale_new(GTK_ORIENTATION_HORIZONTAL, steps);
    gtk_widget_add_css_class(scale, "quillmere-slider");
    gtk_scale_set_draw_value(GTK_SCALE(scale), FALSE);
    gtk_range_set_round_digits(GTK_RANGE(scale), -1);
    connectForLife(scale, "value-changed", [weak = std::weak_ptr(view)](GtkRange* source) {
        if (const auto slid = weak.lock())
            view::slide(*slid, gtk_range_get_value(source));
    });
    return scale;
}

GtkWidget* makeSpinner() {
    GtkWidget* spinner = gtk_spinner_new();
    gtk_widget_add_css_class(spinner, "quillmere-spinner");
    gtk_spinner_start(GTK_SPINNER(spinner));
    return spinner;
}

GtkWidget* makeProgressBar() {
    GtkWidget* bar = gtk_progress_bar_new();
    gtk_widget_add_css_class(bar, "quillmere-bar");
    gtk_progress_bar_set_pulse_step(GTK_PROGRESS_BAR(bar), 0.06);
    return bar;
}

GtkWidget* makeThumbnail(const std::string& file, const view::Size& size) {
    constexpr int densest = 2; // pixels to a point
    const auto pixels = GObjectRef<GdkPixbuf>::adopt(gdk_pixbuf_new_from_file_at_scale(
        file.c_str(), scaled(size.width) * densest, scaled(size.height) * densest, TRUE, nullptr));
    if (!pixels)
        return nullptr;
    const auto texture = GObjectRef<GdkTexture>::adopt(gdk_texture_new_for_pixbuf(pixels.get()));
    GtkWidget* picture = gtk_picture_new_for_paintable(GDK_PAINTABLE(texture.get()));
    gtk_picture_set_content_fit(GTK_PICTURE(picture), GTK_CONTENT_FIT_CONTAIN);
    gtk_picture_set_can_shrink(GTK_PICTURE(picture), TRUE);
    gtk_widget_set_overflow(picture, GTK_OVERFLOW_HIDDEN);
    return picture;
}

} // namespace quillmere::platform::gtk
