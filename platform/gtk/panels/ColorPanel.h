#pragma once

#include "platform/Dialogs.h"
#include "platform/gtk/panels/ColorWheel.h"

namespace quillmere::platform::gtk {

/// The colour panel: a wheel, the brightness and the number of the colour. Stays open beside the window and tells of
/// every step of the choice. Main thread only.
class ColorPanel {
public:
    ColorPanel(GtkWindow* parent, ColorPanelSpec spec);
    ~ColorPanel();
    ColorPanel(const ColorPanel&) = delete;
    ColorPanel& operator=(const ColorPanel&) = delete;

    /// Shows another colour and tells of its changes from now on.
    void follow(ColorPanelSpec spec);

private:
    GtkWidget* makeContent();
    GtkWidget* makeBrightness();
    GtkWidget* makeFoot();
    void closeOnEscape();
    void typed();
    void choose(WheelPoint point, double brightness);
    void show(const view::Color& color);
    void report(const view::Color& color);

    GObjectRef<GtkWindow> window_;
    std::function<void(view::Color)> onChange_;
    view::Color first_; // what "Revert" goes back to
    view::Color reported_;
    WheelPoint point_;
    ColorWheel wheel_;
    GtkRange* brightness_ = nullptr; // owned by the window, as is the number
    GtkEditable* number_ = nullptr;
    bool showing_ = false; // the controls follow a colour, not the user
};

} // namespace quillmere::platform::gtk
