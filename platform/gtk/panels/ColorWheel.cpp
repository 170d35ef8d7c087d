#include "platform/gtk/panels/ColorWheel.h"

#include "platform/gtk/view/TextScale.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace quillmere::platform::gtk {

namespace {

constexpr double side = 232;
constexpr double knob = 7;
constexpr double keyStep = 1.0 / 72;
constexpr double fullTurn = 2 * std::numbers::pi;

uint32_t pixelAt(double right, double down, double radius) {
    const double beyond = std::hypot(right, down) - radius;
    if (beyond >= 1)
        return 0;
    const auto point = wheelPointAt(right, down, radius);
    float red = 0, green = 0, blue = 0;
    gtk_hsv_to_rgb(static_cast<float>(point.hue), static_cast<float>(point.saturation), 1, &red, &green, &blue);
    const double cover = beyond <= 0 ? 1 : 1 - beyond; // a smooth rim
    const auto step = [cover](double part) { return static_cast<uint32_t>(std::lround(part * cover * 255)); };
    return step(1) << 24U | step(static_cast<double>(red)) << 16U | step(static_cast<double>(green)) << 8U |
           step(static_cast<double>(blue));
}

cairo_surface_t* drawDisc(int pixels) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, pixels, pixels);
    const auto stride = static_cast<size_t>(cairo_image_surface_get_stride(surface)) / sizeof(uint32_t);
    auto* data = reinterpret_cast<uint32_t*>(static_cast<void*>(cairo_image_surface_get_data(surface)));
    const double middle = pixels / 2.0;
    for (int y = 0; data && y < pixels; ++y)
        for (int x = 0; x < pixels; ++x)
            data[static_cast<size_t>(y) * stride + static_cast<size_t>(x)] =
                pixelAt(x + 0.5 - middle, y + 0.5 - middle, middle - 1);
    cairo_surface_mark_dirty(surface);
    return surface;
}

} // namespace

WheelPoint wheelPointAt(double right, double down, double radius) {
    const double turn = std::atan2(-down, right) / fullTurn;
    return {.hue = turn < 0 ? turn + 1 : turn, .saturation = std::min(1.0, std::hypot(right, down) / radius)};
}

ColorWheel::ColorWheel(std::function<void(WheelPoint)> chosen)
    : area_(GObjectRef<GtkWidget>::share(gtk_drawing_area_new())), chosen_(std::move(chosen)) {
    GtkWidget* area = area_.get();
    gtk_widget_add_css_class(area, "quillmere-wheel");
    gtk_widget_set_size_request(area, scaled(side), scaled(side));
    gtk_widget_set_halign(area, GTK_ALIGN_CENTER);
    gtk_widget_set_focusable(area, TRUE);
    gtk_accessible_update_property(GTK_ACCESSIBLE(area), GTK_ACCESSIBLE_PROPERTY_LABEL, "Hue and saturation", -1);
    gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(area), draw, this, nullptr);
    followPointer();
    followKeys();
}

void ColorWheel::followPointer() {
    GtkGesture* drag = gtk_gesture_drag_new();
    const auto follow = [this](GtkGestureDrag* gesture, double x, double y) {
        double fromX = 0, fromY = 0;
        gtk_gesture_drag_get_start_point(gesture, &fromX, &fromY);
        const double middleX = gtk_widget_get_width(area_.get()) / 2.0,
                     middleY = gtk_widget_get_height(area_.get()) / 2.0;
        choose(wheelPointAt(fromX + x - middleX, fromY + y - middleY, std::min(middleX, middleY) - 1));
    };
    connectForLife(drag, "drag-begin", [this, follow](GtkGestureDrag* gesture, double, double) {
        gtk_widget_grab_focus(area_.get());
        follow(gesture, 0, 0);
    });
    connectForLife(drag, "drag-update",
                   [follow](GtkGestureDrag* gesture, double x, double y) { follow(gesture, x, y); });
    gtk_widget_add_controller(area_.get(), GTK_EVENT_CONTROLLER(drag));
}

void ColorWheel::followKeys() {
    GtkEventController* keys = gtk_event_controller_key_new();
    connectForLife(keys, "key-pressed", [this](GtkEventControllerKey*, guint key, guint, GdkModifierType) -> gboolean {
        auto point = point_;
        if (key == GDK_KEY_Left || key == GDK_KEY_Right)
            point.hue += key == GDK_KEY_Left ? keyStep : -keyStep;
        else if (key == GDK_KEY_Up || key == GDK_KEY_Down)
            point.saturation += key == GDK_KEY_Up ? keyStep : -keyStep;
        else
            return FALSE;
        choose({.hue = point.hue - std::floor(point.hue), .saturation = std::clamp(point.saturation, 0.0, 1.0)});
        return TRUE;
    });
    gtk_widget_add_controller(area_.get(), keys);
}

void ColorWheel::choose(WheelPoint point) {
    show(point, brightness_);
    chosen_(point);
}

void ColorWheel::show(WheelPoint point, double brightness) {
    point_ = point;
    brightness_ = brightness;
    gtk_widget_queue_draw(area_.get());
}

void ColorWheel::draw(GtkDrawingArea*, cairo_t* context, int width, int height, gpointer self) {
    guarded([&] {
        cairo_translate(context, width / 2.0, height / 2.0);
        static_cast<ColorWheel*>(self)->paint(context, std::min(width, height) / 2.0 - 1);
    });
}

void ColorWheel::paint(cairo_t* context, double radius) {
    const int pixels = static_cast<int>(std::lround((radius + 1) * 2)) * gtk_widget_get_scale_factor(area_.get());
    if (!disc_ || discSide_ != pixels) {
        disc_.reset(drawDisc(pixels));
        discSide_ = pixels;
    }
    cairo_save(context);
    const double shrink = (radius + 1) * 2 / pixels;
    cairo_scale(context, shrink, shrink);
    cairo_set_source_surface(context, disc_.get(), -pixels / 2.0, -pixels / 2.0);
    cairo_paint(context);
    cairo_restore(context);
    // Less light is black over all hues alike.
    cairo_set_source_rgba(context, 0, 0, 0, 1 - brightness_);
    cairo_arc(context, 0, 0, radius, 0, fullTurn);
    cairo_fill(context);

    const double reach = point_.saturation * radius, angle = point_.hue * fullTurn;
    const double x = reach * std::cos(angle), y = -reach * std::sin(angle);
    for (const auto& [size, light] : {std::pair{knob + 1.5, 0.0}, std::pair{knob, 1.0}}) {
        cairo_set_source_rgb(context, light, light, light);
        cairo_set_line_width(context, 2);
        cairo_arc(context, x, y, size, 0, fullTurn);
        cairo_stroke(context);
    }
}

} // namespace quillmere::platform::gtk
