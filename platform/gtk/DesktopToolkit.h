#pragma once

#include "platform/Executors.h"
#include "platform/Services.h"
#include "platform/Toolkit.h"
#include "platform/gtk/desktop/DesktopApplication.h"
#include "platform/gtk/desktop/X11Clipboard.h"

namespace quillmere::platform::gtk {

class DesktopWindow;
class SandboxTrial;

/// Makes the window and the web view. Main thread only.
class DesktopToolkit final : public Toolkit {
public:
    struct Environment {
        DesktopApplication& application;
        Executors& executors;
        UserDefaults& defaults;
        FileUrl icons;      // an icon theme's folder with the program's icon and its symbols
        FileUrl extensions; // folder of the web process extension
        SandboxTrial& sandbox;
    };

    explicit DesktopToolkit(Environment environment) : environment_(std::move(environment)) {}

    std::unique_ptr<Window> makeWindow(const WindowSpec& spec) override;
    /// Ends the program with a sentence where the engine would do so without.
    std::unique_ptr<platform::WebView> makeWebView(const WebViewConfiguration& configuration) override;
    /// None: this desktop has no preview of its own.
    view::ViewRef makeFilePreview(const FileUrl&) override { return nullptr; }
    bool hasSymbol(const std::string& name) const override;

private:
    GtkIconTheme* iconTheme() const;

    Environment environment_;
    mutable bool iconsAdded_ = false;
    std::unique_ptr<X11Clipboard> clipboard_; // none on other displays than X11's
};

} // namespace quillmere::platform::gtk
