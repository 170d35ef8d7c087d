#pragma once

#include "platform/Executors.h"
#include "platform/WebView.h"
#include "platform/gtk/glib/Signals.h"
#include "platform/gtk/reads/FileReads.h"
#include "platform/gtk/scheme/SchemeTasks.h"
#include "platform/gtk/view/WidgetView.h"
#include "platform/gtk/web/NetworkFilter.h"
#include "platform/gtk/web/PageLoad.h"
#include "platform/gtk/web/PageStatus.h"
#include "platform/gtk/web/WebViewBridge.h"

#include <webkit/webkit.h>

namespace quillmere::platform::gtk {

/// The web view over WebKitGTK: nothing of it is stored, it reaches no network, opens no window, asks for nothing and
/// saves nothing. Main thread only.
class DesktopWebView final : public platform::WebView {
public:
    /// `extensions` is the folder that holds the web process extension and nothing else. The executors outlive the
    /// view.
    DesktopWebView(const WebViewConfiguration& configuration, const FileUrl& extensions, Executors& executors);
    ~DesktopWebView() override;

    void setClient(std::weak_ptr<WebViewClient> client) override;
    view::ViewRef view() override { return view_; }
    void load(const std::string& url, std::chrono::seconds timeout) override;
    void reload() override;
    void evaluate(const std::string& script) override;

    WebKitWebView* webView() const noexcept { return web_.get(); }

private:
    void watchNavigation();
    void refuseRequests();
    gboolean decide(WebKitPolicyDecision* decision, WebKitPolicyDecisionType type);
    bool allows(WebKitNavigationPolicyDecision* decision);
    void deliver(json::value body);

    GObjectRef<WebKitWebContext> context_;
    GObjectRef<WebKitNetworkSession> session_;
    GObjectRef<WebKitUserContentManager> content_;
    GObjectRef<WebKitWebView> web_;
    view::ViewRef view_;
    std::weak_ptr<WebViewClient> client_;
    PageStatus status_;
    NetworkFilter filter_;
    SchemeTasks tasks_;
    FileReads reads_;
    WebViewBridge bridge_;
    std::unique_ptr<PageLoad> page_;
    SignalConnections signals_;
};

} // namespace quillmere::platform::gtk
