#pragma once

#include "platform/Services.h"
#include "platform/Window.h"
#include "platform/gtk/glib/Signals.h"

#include <gtk/gtk.h>

namespace quillmere::platform::gtk {

/// The stored form of a window's size, "width height" in points; nothing for text of another form or a size outside
/// `minimum` and what a screen can hold.
std::string sizeText(int width, int height);
std::optional<view::Size> parseSize(const std::string& text, view::Size minimum);

/// Keeps the size of the window in the user's defaults and restores it. Where the window stands is the desktop's
/// choice.
class SizeMemory {
public:
    SizeMemory(GtkWindow* window, const WindowSpec& spec, UserDefaults& defaults);
    /// Writes a size that changed a moment ago.
    void flush();

private:
    void save();

    GtkWindow* window_;
    std::string key_;
    UserDefaults& defaults_;
    SignalConnections connections_;
    LoopTimer saving_;
};

/// Puts the window into the middle of its monitor's work area when it is mapped, where programs may place windows
/// (X11); elsewhere the compositor decides.
void centerWhenMapped(GtkWindow* window);

} // namespace quillmere::platform::gtk
