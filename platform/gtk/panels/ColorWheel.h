#pragma once

#include "platform/gtk/glib/Signals.h"

#include <gtk/gtk.h>

namespace quillmere::platform::gtk {

/// A place on the wheel: the hue goes round it against the clock from the right, the saturation from its middle
/// outwards. Both 0 to 1.
struct WheelPoint {
    double hue = 0;
    double saturation = 0;
};

/// The place at this offset from the middle, to the right and downwards; beyond the rim the nearest on it.
WheelPoint wheelPointAt(double right, double down, double radius);

/// A disc of all hues and saturations to choose from by pointer or arrow keys. Main thread only.
class ColorWheel {
public:
    explicit ColorWheel(std::function<void(WheelPoint)> chosen);
    ColorWheel(const ColorWheel&) = delete;
    ColorWheel& operator=(const ColorWheel&) = delete;

    GtkWidget* widget() const { return area_.get(); }
    void show(WheelPoint point, double brightness);

private:
    static void draw(GtkDrawingArea*, cairo_t* context, int width, int height, gpointer self);
    void paint(cairo_t* context, double radius);
    void choose(WheelPoint point);
    void followPointer();
    void followKeys();

    struct SurfaceDestroy {
        void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
    };
    GObjectRef<GtkWidget> area_;
    std::function<void(WheelPoint)> chosen_;
    WheelPoint point_;
    double brightness_ = 1;
    std::unique_ptr<cairo_surface_t, SurfaceDestroy> disc_; // at full brightness
    int discSide_ = 0;                                      // pixels
};

} // namespace quillmere::platform::gtk
