#pragma once

#include "platform/WebView.h"

#include <functional>
#include <memory>

namespace quillmere {

/// The one web view, which also takes dropped files. Main thread only. Drops end here; all else that the engine tells
/// is passed to the host.
class FileWebView final : public platform::WebViewClient {
public:
    /// What the web view needs from its owner.
    class Host {
    public:
        virtual ~Host() = default;
        virtual platform::NavigationDecision decideNavigation(const std::optional<std::string>& url) = 0;
        virtual void didFailProvisionalNavigation(const std::string& description) = 0;
        virtual void contentProcessDidTerminate() = 0;
        virtual void didReceiveScriptMessage(const platform::ScriptMessage& message) = 0;
    };

    /// The host is held weakly.
    static std::shared_ptr<FileWebView> make(std::unique_ptr<platform::WebView> web, std::weak_ptr<Host> host);

    platform::WebView& web() noexcept { return *web_; }

    platform::NavigationDecision decideNavigation(const std::optional<std::string>& url) override;
    void didFailProvisionalNavigation(const std::string& description) override;
    void contentProcessDidTerminate() override;
    void didReceiveScriptMessage(const platform::ScriptMessage& message) override;
    platform::DragOperation draggingEntered(const std::vector<FileUrl>& files) override;
    bool performDragOperation(const std::vector<FileUrl>& files) override;

    /// Called with the first of the files that were dropped.
    std::function<void(const FileUrl&)> onDrop;

private:
    FileWebView(std::unique_ptr<platform::WebView> web, std::weak_ptr<Host> host);

    std::unique_ptr<platform::WebView> web_;
    std::weak_ptr<Host> host_;
};

} // namespace quillmere
