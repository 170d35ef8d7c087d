#include "platform/gtk/WindowPlacement.h"

#include <charconv>
#include <gdk/x11/gdkx.h>

namespace quillmere::platform::gtk {

namespace {

constexpr double largestSide = 16'384;
constexpr std::chrono::milliseconds saveDelay{400};

void centerNow(GtkWindow* window) {
    GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window));
    if (!GDK_IS_X11_SURFACE(surface))
        return;
    GdkDisplay* display = gdk_surface_get_display(surface);
    GdkMonitor* monitor = gdk_display_get_monitor_at_surface(display, surface);
    if (!monitor)
        return;
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
    if (XGetGeometry(connection, id, &root, &x, &y, &width, &height, &border, &depth))
        XMoveWindow(connection, id, area.x * scale + (area.width * scale - static_cast<int>(width)) / 2,
                    area.y * scale + (area.height * scale - static_cast<int>(height)) / 2);
    gdk_x11_display_error_trap_pop_ignored(display);
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
    connectForLife(window, "map", [](GtkWindow* mapped) { centerNow(mapped); });
}

} // namespace quillmere::platform::gtk
