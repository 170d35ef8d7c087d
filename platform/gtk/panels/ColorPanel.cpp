#include "platform/gtk/panels/ColorPanel.h"

#include "platform/gtk/view/TextScale.h"

#include <cmath>

namespace quillmere::platform::gtk {

namespace {

constexpr double spacing = 12;
constexpr int numberLength = 7;

std::string numberOf(const view::Color& color) {
    const auto step = [](double part) { return static_cast<unsigned>(std::lround(part * 255)); };
    char text[numberLength + 1];
    std::snprintf(text, sizeof text, "#%02X%02X%02X", step(color.red) & 0xFFU, step(color.green) & 0xFFU,
                  step(color.blue) & 0xFFU);
    return text;
}

view::Color colorOf(const GdkRGBA& color) {
    return {.red = static_cast<double>(color.red),
            .green = static_cast<double>(color.green),
            .blue = static_cast<double>(color.blue)};
}

void name(GtkWidget* widget, const char* label) {
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, label, -1);
}

} // namespace

ColorPanel::ColorPanel(GtkWindow* parent, ColorPanelSpec spec)
    : window_(GObjectRef<GtkWindow>::share(GTK_WINDOW(gtk_window_new()))),
      wheel_([this](WheelPoint point) { choose(point, gtk_range_get_value(brightness_)); }) {
    auto* window = window_.get();
    gtk_widget_add_css_class(GTK_WIDGET(window), "quillmere-colors");
    gtk_window_set_title(window, "Colors");
    gtk_window_set_transient_for(window, parent);
    gtk_window_set_resizable(window, FALSE);
    gtk_window_set_hide_on_close(window, TRUE);
    gtk_window_set_child(window, makeContent());
    closeOnEscape();
    follow(std::move(spec));
}

ColorPanel::~ColorPanel() {
    onChange_ = nullptr;
    gtk_window_destroy(window_.get());
}

void ColorPanel::follow(ColorPanelSpec spec) {
    onChange_ = std::move(spec.onChange);
    first_ = reported_ = spec.color;
    show(spec.color);
    gtk_window_present(window_.get());
}

GtkWidget* ColorPanel::makeContent() {
    GtkWidget* column = gtk_box_new(GTK_ORIENTATION_VERTICAL, scaled(spacing));
    gtk_widget_add_css_class(column, "quillmere-colors-body");
    gtk_box_append(GTK_BOX(column), wheel_.widget());
    gtk_box_append(GTK_BOX(column), makeBrightness());
    gtk_box_append(GTK_BOX(column), makeFoot());
    return column;
}

GtkWidget* ColorPanel::makeBrightness() {
    GtkWidget* scale = gtk_scale_new_with_range(GTK_ORIENTATION_HORIZONTAL, 0, 1, 0.01);
    gtk_widget_add_css_class(scale, "quillmere-slider");
    gtk_scale_set_draw_value(GTK_SCALE(scale), FALSE);
    gtk_range_set_round_digits(GTK_RANGE(scale), -1);
    name(scale, "Brightness");
    gtk_widget_set_tooltip_text(scale, "Brightness");
    brightness_ = GTK_RANGE(scale);
    connectForLife(scale, "value-changed", [this](GtkRange* range) {
        if (!showing_)
            choose(point_, gtk_range_get_value(range));
    });
    return scale;
}

GtkWidget* ColorPanel::makeFoot() {
    GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, scaled(spacing));
    GtkWidget* entry = gtk_entry_new();
    number_ = GTK_EDITABLE(entry);
    gtk_editable_set_width_chars(number_, numberLength + 1);
    gtk_editable_set_max_width_chars(number_, numberLength + 1);
    gtk_widget_set_hexpand(entry, TRUE);
    name(entry, "Color number");
    connectForLife(entry, "changed", [this](GtkEditable*) { typed(); });
    GtkWidget* revert = gtk_button_new_with_label("Revert");
    gtk_widget_add_css_class(revert, "quillmere-button");
    connectForLife(revert, "clicked", [this](GtkButton*) {
        show(first_);
        report(first_);
    });
    gtk_box_append(GTK_BOX(row), entry);
    gtk_box_append(GTK_BOX(row), revert);
    return row;
}

void ColorPanel::closeOnEscape() {
    GtkEventController* keys = gtk_event_controller_key_new();
    connectForLife(keys, "key-pressed", [this](GtkEventControllerKey*, guint key, guint, GdkModifierType) -> gboolean {
        if (key != GDK_KEY_Escape)
            return FALSE;
        gtk_window_close(window_.get());
        return TRUE;
    });
    gtk_widget_add_controller(GTK_WIDGET(window_.get()), keys);
}

void ColorPanel::typed() {
    GdkRGBA color{};
    const std::string text = gtk_editable_get_text(number_);
    // Six digits alone: the toolkit would take names and fewer digits, on the way to the whole number.
    if (showing_ || text.size() != numberLength || text.front() != '#' || !gdk_rgba_parse(&color, text.c_str()))
        return;
    showing_ = true;
    float hue = 0, saturation = 0, value = 0;
    gtk_rgb_to_hsv(color.red, color.green, color.blue, &hue, &saturation, &value);
    point_ = {.hue = static_cast<double>(hue), .saturation = static_cast<double>(saturation)};
    gtk_range_set_value(brightness_, static_cast<double>(value));
    wheel_.show(point_, static_cast<double>(value));
    showing_ = false;
    report(colorOf(color));
}

void ColorPanel::choose(WheelPoint point, double brightness) {
    point_ = point;
    float red = 0, green = 0, blue = 0;
    gtk_hsv_to_rgb(static_cast<float>(point.hue), static_cast<float>(point.saturation), static_cast<float>(brightness),
                   &red, &green, &blue);
    const auto color = colorOf({red, green, blue, 1});
    showing_ = true;
    wheel_.show(point, brightness);
    gtk_editable_set_text(number_, numberOf(color).c_str());
    showing_ = false;
    report(color);
}

void ColorPanel::show(const view::Color& color) {
    float hue = 0, saturation = 0, value = 0;
    gtk_rgb_to_hsv(static_cast<float>(color.red), static_cast<float>(color.green), static_cast<float>(color.blue), &hue,
                   &saturation, &value);
    point_ = {.hue = static_cast<double>(hue), .saturation = static_cast<double>(saturation)};
    showing_ = true;
    gtk_range_set_value(brightness_, static_cast<double>(value));
    gtk_editable_set_text(number_, numberOf(color).c_str());
    wheel_.show(point_, static_cast<double>(value));
    showing_ = false;
}

void ColorPanel::report(const view::Color& color) {
    if (std::exchange(reported_, color) == color || !onChange_)
        return;
    const auto tell = onChange_; // the listener may have another colour followed
    tell(color);
}

} // namespace quillmere::platform::gtk
