#pragma once

#include "base/FileUrl.h"
#include "base/Json.h"
#include "platform/Scheme.h"
#include "platform/view/View.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere::platform {

enum class NavigationDecision { allow, cancel };
enum class DragOperation { none, copy };

/// A message from the page's script, as it came.
struct ScriptMessage {
    json::value body;
    bool mainFrame = false;
    std::optional<std::string> frameUrl;
};

/// What the web view tells its delegate, on the main thread.
class WebViewClient {
public:
    virtual ~WebViewClient() = default;
    virtual NavigationDecision decideNavigation(const std::optional<std::string>& url) = 0;
    virtual void didFailProvisionalNavigation(const std::string& description) = 0;
    virtual void contentProcessDidTerminate() = 0;
    virtual void didReceiveScriptMessage(const ScriptMessage& message) = 0;
    /// `files` are the local files that the drag carries; web links are not among them.
    virtual DragOperation draggingEntered(const std::vector<FileUrl>& files) = 0;
    virtual bool performDragOperation(const std::vector<FileUrl>& files) = 0;
};

struct WebViewConfiguration {
    std::string scheme;                     // the private scheme
    std::string host;                       // its one host
    SchemeHandler* schemeHandler = nullptr; // outlives the view
    std::string messageHandler;             // name under which the page posts messages
    std::optional<std::string> userScript;  // injected at document start into the main frame
    bool javaScriptCanOpenWindows = false;
    bool mediaPlaybackNeedsUserAction = false;
};

/// The one web view. Main thread only. Nothing but the private scheme, blob and data addresses is ever loaded in it, by
/// whatever element, worker or frame: the backend installs that rule before the first load.
class WebView {
public:
    virtual ~WebView() = default;
    virtual void setClient(std::weak_ptr<WebViewClient> client) = 0;
    virtual view::ViewRef view() = 0;
    virtual void load(const std::string& url, std::chrono::seconds timeout) = 0;
    virtual void reload() = 0;
    /// Runs script in the page; results and errors are dropped.
    virtual void evaluate(const std::string& script) = 0;
};

} // namespace quillmere::platform
