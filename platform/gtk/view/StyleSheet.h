#pragma once

#include "platform/gtk/glib/GObjectRef.h"
#include "platform/view/Theme.h"

#include <gtk/gtk.h>

#include <optional>
#include <string>

namespace quillmere::platform::gtk {

/// The look of the native parts: one fixed style sheet over the desktop's theme and one with the colours of the tint.
/// Main thread only, once a display is open.
class StyleSheet {
public:
    StyleSheet();
    ~StyleSheet();
    StyleSheet(const StyleSheet&) = delete;
    StyleSheet& operator=(const StyleSheet&) = delete;

    void setTheme(const view::Theme& theme);

private:
    GObjectRef<GdkDisplay> display_;
    GObjectRef<GtkCssProvider> rules_;
    GObjectRef<GtkCssProvider> colors_;
    std::optional<view::Theme> theme_;
};

/// "rgba(r,g,b,a)" for a style sheet, the components as integers, independent of the locale.
std::string cssColor(const view::Color& color);

/// Style rules for one widget alone, in place of earlier ones; `declarations` stand inside the braces.
class WidgetStyle {
public:
    explicit WidgetStyle(GtkWidget* widget);
    void set(const std::string& declarations);

private:
    GObjectRef<GtkCssProvider> provider_;
};

} // namespace quillmere::platform::gtk
