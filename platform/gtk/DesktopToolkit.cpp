#include "platform/gtk/DesktopToolkit.h"

#include "platform/gtk/DesktopWindow.h"
#include "platform/gtk/WebView.h"

#include <unistd.h>

namespace quillmere::platform::gtk {

std::unique_ptr<Window> DesktopToolkit::makeWindow(const WindowSpec& spec) {
    gtk_icon_theme_add_search_path(gtk_icon_theme_get_for_display(gdk_display_get_default()),
                                   environment_.icons.path().c_str());
    gtk_window_set_default_icon_name(applicationId);
    return std::make_unique<DesktopWindow>(spec, DesktopWindow::Environment{.application = environment_.application,
                                                                            .defaults = environment_.defaults,
                                                                            .symbols = environment_.symbols});
}

std::unique_ptr<platform::WebView> DesktopToolkit::makeWebView(const WebViewConfiguration& configuration) {
    return std::make_unique<WebView>(configuration, environment_.extensions, environment_.executors);
}

bool DesktopToolkit::hasSymbol(const std::string& name) const {
    return ::access(environment_.symbols.appending(symbolFileName(name)).path().c_str(), R_OK) == 0;
}

} // namespace quillmere::platform::gtk
