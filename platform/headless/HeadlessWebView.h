#pragma once

#include "platform/WebView.h"
#include "platform/headless/HeadlessSchemeTask.h"

namespace quillmere::platform {

/// A web view without an engine: it records what the shell does to the page, and acts as the page, the engine and the
/// user would.
class HeadlessWebView : public WebView {
public:
    explicit HeadlessWebView(const WebViewConfiguration& made);

    void setClient(std::weak_ptr<WebViewClient> client) override { client_ = std::move(client); }
    view::ViewRef view() override { return view_; }
    void load(const std::string& url, std::chrono::seconds timeout) override;
    void reload() override { ++reloads; }
    void evaluate(const std::string& script) override { scripts.push_back(script); }

    /// The page posts a message from its own main frame.
    void post(json::value body);
    void post(const ScriptMessage& message);
    NavigationDecision navigate(const std::optional<std::string>& url);
    void failProvisionalNavigation(const std::string& description);
    /// The content process dies.
    void crash();
    DragOperation drag(const std::vector<FileUrl>& files);
    bool drop(const std::vector<FileUrl>& files);
    /// The page fetches an address.
    std::shared_ptr<HeadlessSchemeTask> fetch(SchemeRequest request);

    /// The arguments of every call of this function of the page, in order; scripts of another shape are not among them.
    std::vector<JsonObject> calls(const std::string& function) const;
    /// The messages that the page has received.
    std::vector<JsonObject> messages() const { return calls("receive"); }

    const WebViewConfiguration configuration;
    std::vector<std::pair<std::string, std::chrono::seconds>> loads;
    int reloads = 0;
    std::vector<std::string> scripts;

private:
    std::weak_ptr<WebViewClient> client_;
    view::ViewRef view_;
};

} // namespace quillmere::platform
