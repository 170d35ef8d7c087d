#pragma once

#include "platform/WebView.h"
#include "platform/Window.h"

#include <memory>
#include <string>

namespace quillmere::platform {

/// Makes native things. Main thread only.
class Toolkit {
public:
    virtual ~Toolkit() = default;
    virtual std::unique_ptr<Window> makeWindow(const WindowSpec& spec) = 0;
    virtual std::unique_ptr<WebView> makeWebView(const WebViewConfiguration& configuration) = 0;
    /// The platform's own preview of a file, started by itself; none where there is no such view.
    virtual view::ViewRef makeFilePreview(const FileUrl& file) = 0;
    /// Whether an image for this symbol exists.
    virtual bool hasSymbol(const std::string& name) const = 0;
};

} // namespace quillmere::platform
