#include "platform/gtk/window/WindowPlacement.h"

#include <charconv>
#include <gdk/x11/gdkx.h>

namespace quillmere::platform::gtk {

namespace {

constexpr double largestSide = 16'384;
constexpr std::chrono::milliseconds saveDelay{400};

/// False while the X window does not have its size yet.
bool centerNow(GtkWindow* window) {
    GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window));
    if (!surface || !GDK_IS_X11_SURFACE(surface))
        return true;
    GdkDisplay* display = gdk_surface_get_display(surface);
    GdkMonitor* monitor = gdk_display_get_monitor_at_surface(display, surface);
    if (!monitor)
        return true;
    GdkRectangle area{};
    gdk_x11_monitor_get_workarea(monitor, &area);
    const int scale = gdk_surface_get_scale_factor(surface);

    Display* connection = gdk_x11_display_get_xdisplay(display);
    const auto id = gdk_x11_surface_get_xid(surface);
    gdk_x11_display_error_trap_push(display);
    ::Window root{};
    int x = 0, y = 0;
    unsigned width = 0, height = 0, border = 0, depth = 0;
    // The real size: shadows around the content count, so that the content stands in the middle.
    const bool known = XGetGeometry(connection, id, &root, &x, &y, &width, &height, &border, &depth) != 0;
    int least = 0;
    gtk_widget_get_size_request(GTK_WIDGET(window), &least, nullptr);
    const bool sized = !known || static_cast<int>(width) >= least * scale;
    if (known && sized)
        XMoveWindow(connection, id, area.x * scale + (area.width * scale - static_cast<int>(width)) / 2,
                    area.y * scale + (area.height * scale - static_cast<int>(height)) / 2);
    gdk_x11_display_error_trap_pop_ignored(display);
    return sized;
}

/// The server may give a mapped window its size a little later.
struct Centering {
    GObjectWeak<GtkWindow> window;
    int attemptsLeft = 50;
};

constexpr unsigned retryMilliseconds = 15;

gboolean retryCentering(gpointer data) {
    return guarded(gboolean{G_SOURCE_REMOVE}, [&] {
        auto& centering = *static_cast<Centering*>(data);
        const auto window = centering.window.lock();
        const bool again = window && !centerNow(window.get()) && --centering.attemptsLeft > 0;
        return again ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
    });
}

} // namespace

std::string sizeText(int width, int height) {
    return std::to_string(width) + " " + std::to_string(height);
}

std::optional<view::Size> parseSize(const std::string& text, view::Size minimum) {
    int width = 0, height = 0;
    const char* const end = text.data() + text.size();
    const auto first = std::from_chars(text.data(), end, width);
    if (first.ec != std::errc{} || first.ptr == end || *first.ptr != ' ')
        return std::nullopt;
    const auto second = std::from_chars(first.ptr + 1, end, height);
    if (second.ec != std::errc{} || second.ptr != end)
        return std::nullopt;
    if (width < minimum.width || height < minimum.height || width > largestSide || height > largestSide)
        return std::nullopt;
    return view::Size{.width = static_cast<double>(width), .height = static_cast<double>(height)};
}

SizeMemory::SizeMemory(GtkWindow* window, const WindowSpec& spec, UserDefaults& defaults)
    : window_(window), key_(spec.autosaveName), defaults_(defaults) {
    const auto saved = key_.empty() ? std::nullopt : defaults.string(key_);
    const auto size = saved ? parseSize(*saved, spec.minimumSize).value_or(spec.contentSize) : spec.contentSize;
    gtk_window_set_default_size(window, static_cast<int>(size.width), static_cast<int>(size.height));
    if (key_.empty())
        return;
    // The toolkit keeps these two to the size that the user gave, not to that of the full screen.
    for (const char* property : {"notify::default-width", "notify::default-height"})
        connections_.push_back(
            connect(window, property, [this](GObject*, GParamSpec*) { saving_.after(saveDelay, [this] { save(); }); }));
}

void SizeMemory::flush() {
    if (!saving_.pending())
        return;
    saving_.cancel();
    save();
}

void SizeMemory::save() {
    int width = 0, height = 0;
    gtk_window_get_default_size(window_, &width, &height);
    if (const auto text = sizeText(width, height); width > 0 && height > 0 && defaults_.string(key_) != text)
        defaults_.setString(key_, text);
}

void centerWhenMapped(GtkWindow* window) {
    connectForLife(window, "map", [](GtkWindow* mapped) {
        if (centerNow(mapped))
            return;
        auto centering = std::make_unique<Centering>();
        centering->window.set(mapped);
        g_timeout_add_full(G_PRIORITY_DEFAULT, retryMilliseconds, retryCentering, centering.release(),
                           [](gpointer data) { delete static_cast<Centering*>(data); });
    });
}

} // namespace quillmere::platform::gtk
