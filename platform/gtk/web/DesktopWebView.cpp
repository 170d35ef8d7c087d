#include "platform/gtk/web/DesktopWebView.h"

#include "platform/gtk/web/FileDrop.h"
#include "platform/gtk/web/WebViewSettings.h"

namespace quillmere::platform::gtk {

namespace {

constexpr std::chrono::seconds filterLimit{5};

class WebWidget final : public WidgetView {
public:
    explicit WebWidget(GObjectRef<WebKitWebView> web) : web_(std::move(web)) {}
    GtkWidget* widget() override { return GTK_WIDGET(web_.get()); }

private:
    GObjectRef<WebKitWebView> web_;
};

} // namespace

DesktopWebView::DesktopWebView(const WebViewConfiguration& configuration, const FileUrl& extensions,
                               Executors& executors)
    : context_(makeWebContext()), session_(makeWebSession()),
      content_(GObjectRef<WebKitUserContentManager>::adopt(webkit_user_content_manager_new())), status_(content_.get()),
      filter_(content_.get(), configuration.scheme, configuration.host),
      tasks_(context_.get(), configuration.scheme, *configuration.schemeHandler),
      reads_(context_.get(), extensions, *configuration.schemeHandler, executors),
      bridge_(content_.get(), configuration.messageHandler, configuration.userScript,
              [this](json::value body) { deliver(std::move(body)); }) {
    web_ = makeWebWidget(configuration, context_.get(), session_.get(), content_.get());
    tasks_.setPage(web_.get());
    view_ = view::View::make(view::Native{std::make_shared<WebWidget>(web_)});
    status_.showIn(web_.get());
    watchNavigation();
    refuseRequests();
    page_ = std::make_unique<PageLoad>(web_.get(), [this](const std::string& description) {
        if (const auto client = client_.lock())
            client->didFailProvisionalNavigation(description);
    });
}

DesktopWebView::~DesktopWebView() = default;

void DesktopWebView::watchNavigation() {
    auto* web = web_.get();
    signals_.push_back(connect(web, "decide-policy",
                               [this](WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type) {
                                   return decide(decision, type);
                               }));
    signals_.push_back(
        connect(web, "web-process-terminated", [this](WebKitWebView*, WebKitWebProcessTerminationReason) {
            tasks_.pageIsGone();
            page_->processDied();
            if (const auto client = client_.lock())
                client->contentProcessDidTerminate();
        }));
}

// Everything that a page may ask of its host and that this one does not give.
void DesktopWebView::refuseRequests() {
    auto* web = web_.get();
    signals_.push_back(connect(web, "context-menu",
                               [](WebKitWebView*, WebKitContextMenu* menu, WebKitHitTestResult* place) -> gboolean {
                                   trimContextMenu(menu, place);
                                   return FALSE; // shown
                               }));
    signals_.push_back(
        connect(web, "create", [](WebKitWebView*, WebKitNavigationAction*) -> GtkWidget* { return nullptr; }));
    signals_.push_back(
        connect(web, "permission-request", [](WebKitWebView*, WebKitPermissionRequest* request) -> gboolean {
            webkit_permission_request_deny(request);
            return TRUE;
        }));
    signals_.push_back(
        connect(web, "run-file-chooser", [](WebKitWebView*, WebKitFileChooserRequest* request) -> gboolean {
            webkit_file_chooser_request_cancel(request);
            return TRUE;
        }));
    signals_.push_back(
        connect(web, "script-dialog", [](WebKitWebView*, WebKitScriptDialog*) -> gboolean { return TRUE; }));
    signals_.push_back(connect(web, "print", [](WebKitWebView*, WebKitPrintOperation*) -> gboolean { return TRUE; }));
    signals_.push_back(
        connect(web, "show-notification", [](WebKitWebView*, WebKitNotification*) -> gboolean { return TRUE; }));
    signals_.push_back(connect(session_.get(), "download-started", [](WebKitNetworkSession*, WebKitDownload* download) {
        webkit_download_cancel(download);
    }));
}

void DesktopWebView::setClient(std::weak_ptr<WebViewClient> client) {
    const bool isFirst = client_.expired();
    client_ = std::move(client);
    if (isFirst)
        acceptFileDrops(GTK_WIDGET(web_.get()), client_);
}

gboolean DesktopWebView::decide(WebKitPolicyDecision* decision, WebKitPolicyDecisionType type) {
    bool allowed = false;
    switch (type) {
    case WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION:
        allowed = allows(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
        break;
    case WEBKIT_POLICY_DECISION_TYPE_RESPONSE:
        // What cannot be shown would become a download.
        allowed = webkit_response_policy_decision_is_mime_type_supported(WEBKIT_RESPONSE_POLICY_DECISION(decision));
        break;
    case WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION:
        break;
    }
    if (allowed)
        webkit_policy_decision_use(decision);
    else
        webkit_policy_decision_ignore(decision);
    return TRUE;
}

bool DesktopWebView::allows(WebKitNavigationPolicyDecision* decision) {
    const auto client = client_.lock();
    auto* action = webkit_navigation_policy_decision_get_navigation_action(decision);
    auto* request = action ? webkit_navigation_action_get_request(action) : nullptr;
    const char* url = request ? webkit_uri_request_get_uri(request) : nullptr;
    return client &&
           client->decideNavigation(url ? std::optional<std::string>(url) : std::nullopt) == NavigationDecision::allow;
}

void DesktopWebView::load(const std::string& url, std::chrono::seconds timeout) {
    if (filter_.wait(filterLimit) == NetworkFilter::State::installed)
        page_->load(url, timeout);
    else
        page_->fail(filter_.failure());
}

void DesktopWebView::reload() {
    page_->reload(); // of nothing, when the filter kept the page from being loaded
}

void DesktopWebView::evaluate(const std::string& script) {
    webkit_web_view_evaluate_javascript(web_.get(), script.data(), static_cast<gssize>(script.size()), nullptr, nullptr,
                                        nullptr, nullptr, nullptr);
}

void DesktopWebView::deliver(json::value body) {
    const auto client = client_.lock();
    if (!client)
        return;
    const char* url = webkit_web_view_get_uri(web_.get());
    client->didReceiveScriptMessage(
        {.body = std::move(body), .mainFrame = true, .frameUrl = url ? std::optional<std::string>(url) : std::nullopt});
}

} // namespace quillmere::platform::gtk
