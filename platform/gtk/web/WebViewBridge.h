#pragma once

#include "platform/WebView.h"
#include "platform/gtk/glib/GObjectRef.h"
#include "platform/gtk/glib/Signals.h"

#include <webkit/webkit.h>

#include <functional>
#include <string>

namespace quillmere::platform::gtk {

/// The way from the page's script to the program, for the main frame alone. A handler that is registered plainly can be
/// reached from every frame, and its messages do not say which one spoke. So the handler lives in a script world of its
/// own; two user scripts that only the main frame gets carry messages there as JSON text. Main thread only.
class WebViewBridge {
public:
    /// Longer strings arrive as null, in UTF-16 units.
    static constexpr size_t longestString = size_t{16} * 1024 * 1024;
    /// Longer messages are dropped, in bytes of JSON text: room for one such string where every unit is an escape.
    static constexpr size_t messageLimit = longestString * 6 + size_t{1024} * 1024;

    /// `received` gets every well-formed message's body. `userScript` runs in the page before its own scripts.
    WebViewBridge(WebKitUserContentManager* manager, const std::string& handler,
                  const std::optional<std::string>& userScript, std::function<void(json::value)> received);

    /// The body that a script value stands for; nothing when it is not JSON text within the limits.
    static std::optional<json::value> bodyOf(JSCValue* value);

private:
    SignalConnection connection_;
};

} // namespace quillmere::platform::gtk
