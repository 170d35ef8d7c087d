#include "platform/gtk/DesktopToolkit.h"

#include "platform/common/EndOfProgram.h"
#include "platform/gtk/view/ViewWidgets.h"
#include "platform/gtk/web/DesktopWebView.h"
#include "platform/gtk/web/SandboxTrial.h"
#include "platform/gtk/window/DesktopWindow.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace quillmere::platform::gtk {

std::unique_ptr<Window> DesktopToolkit::makeWindow(const WindowSpec& spec) {
    iconTheme();
    gtk_window_set_default_icon_name(applicationId);
    if (!clipboard_)
        clipboard_ = X11Clipboard::open(gdk_display_get_default());
    return std::make_unique<DesktopWindow>(
        spec, DesktopWindow::Environment{.application = environment_.application, .defaults = environment_.defaults});
}

std::unique_ptr<platform::WebView> DesktopToolkit::makeWebView(const WebViewConfiguration& configuration) {
    if (const auto failure = environment_.sandbox.failure()) {
        std::fprintf(stderr, "Quillmere could not start: %s\n", failure->c_str());
        endProgram(EXIT_FAILURE);
    }
    return std::make_unique<DesktopWebView>(configuration, environment_.extensions, environment_.executors);
}

bool DesktopToolkit::hasSymbol(const std::string& name) const {
    return gtk_icon_theme_has_icon(iconTheme(), symbolIconName(name).c_str());
}

GtkIconTheme* DesktopToolkit::iconTheme() const {
    GtkIconTheme* theme = gtk_icon_theme_get_for_display(gdk_display_get_default());
    if (!std::exchange(iconsAdded_, true))
        gtk_icon_theme_add_search_path(theme, environment_.icons.path().c_str());
    return theme;
}

} // namespace quillmere::platform::gtk
