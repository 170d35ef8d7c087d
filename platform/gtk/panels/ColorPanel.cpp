#include "platform/gtk/panels/ColorPanel.h"

namespace quillmere::platform::gtk {

ColorPanel::ColorPanel(GtkWindow* parent, ColorPanelSpec spec)
    : dialog_(GObjectRef<GtkWindow>::share(GTK_WINDOW(gtk_color_chooser_dialog_new("Colour", parent)))),
      onChange_(std::move(spec.onChange)), reported_(spec.color) {
    gtk_window_set_modal(dialog_.get(), FALSE);
    auto* chooser = GTK_COLOR_CHOOSER(dialog_.get());
    gtk_color_chooser_set_use_alpha(chooser, FALSE);
    const GdkRGBA color{static_cast<float>(spec.color.red), static_cast<float>(spec.color.green),
                        static_cast<float>(spec.color.blue), 1};
    gtk_color_chooser_set_rgba(chooser, &color);
    g_object_set(dialog_.get(), "show-editor", TRUE, nullptr);

    // One step of the choice notifies twice, once with a mixture of the old and the new value.
    connections_.push_back(connect(dialog_.get(), "notify::rgba", [this](GObject*, GParamSpec*) {
        reporting_.after(std::chrono::milliseconds{0}, [this] { report(); });
    }));
    connections_.push_back(connect(dialog_.get(), "response", [this](GtkDialog*, int) {
        gtk_widget_set_visible(GTK_WIDGET(dialog_.get()), FALSE);
    }));
    gtk_window_present(dialog_.get());
}

ColorPanel::~ColorPanel() {
    connections_.clear();
    gtk_window_destroy(dialog_.get());
}

void ColorPanel::report() {
    GdkRGBA chosen{};
    gtk_color_chooser_get_rgba(GTK_COLOR_CHOOSER(dialog_.get()), &chosen);
    const view::Color color{.red = static_cast<double>(chosen.red),
                            .green = static_cast<double>(chosen.green),
                            .blue = static_cast<double>(chosen.blue)};
    if (color == reported_ || !onChange_)
        return;
    reported_ = color;
    onChange_(color);
}

} // namespace quillmere::platform::gtk
