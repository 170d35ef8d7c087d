#include "platform/gtk/web/PageLoad.h"

#include <string_view>
#include <utility>

namespace quillmere::platform::gtk {

namespace {

/// A load that we ended ourselves: by a newer load, or by the navigation policy.
bool isOwnCancellation(const GError& error) {
    return g_error_matches(&error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) ||
           g_error_matches(&error, WEBKIT_POLICY_ERROR, WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE);
}

} // namespace

PageLoad::PageLoad(WebKitWebView* web, std::function<void(const std::string&)> failed)
    : web_(GObjectRef<WebKitWebView>::share(web)), failed_(std::move(failed)) {
    watch();
    // A load of nothing: the process takes longer to start than the rest of the window to be made, so it starts first.
    webkit_web_view_load_uri(web, "about:blank");
}

void PageLoad::watch() {
    auto* web = web_.get();
    signals_.push_back(connect(web, "load-changed", [this](WebKitWebView* view, WebKitLoadEvent stage) {
        const char* url = webkit_web_view_get_uri(view);
        if (stage != WEBKIT_LOAD_COMMITTED || !url || std::string_view(url).starts_with("about:"))
            return;
        committed_ = true;
        timeout_.cancel();
    }));
    signals_.push_back(connect(web, "load-failed",
                               [this](WebKitWebView*, WebKitLoadEvent stage, const char*, GError* error) -> gboolean {
                                   loadFailed(stage, *error);
                                   return TRUE; // no error page of the engine's
                               }));
}

void PageLoad::load(const std::string& url, std::chrono::seconds timeout) {
    url_ = url;
    limit_ = timeout;
    committed_ = false;
    reload_.cancel();
    timeout_.cancel();
    start();
}

// A process that dies on the way takes nothing of the time away: the limit counts from the first attempt.
void PageLoad::start() {
    if (!timeout_.pending())
        timeout_.after(limit_, [this] {
            reload_.cancel();
            webkit_web_view_stop_loading(web_.get());
            fail("The viewer did not answer in time.");
        });
    // Where nothing was ever committed there is an address, and yet nothing to load again.
    if (std::exchange(committed_, false))
        webkit_web_view_reload(web_.get());
    else
        webkit_web_view_load_uri(web_.get(), url_.c_str());
}

void PageLoad::reload() {
    if (!url_.empty())
        reload_.after(std::exchange(pause_, {}), [this] { start(); });
}

void PageLoad::processDied() {
    pause_ = pace_.afterDeath(steadyNow());
}

void PageLoad::loadFailed(WebKitLoadEvent stage, const GError& error) {
    if ((stage != WEBKIT_LOAD_STARTED && stage != WEBKIT_LOAD_REDIRECTED) || isOwnCancellation(error))
        return;
    timeout_.cancel();
    fail(error.message);
}

void PageLoad::fail(std::string description) {
    failure_.after(std::chrono::milliseconds(0),
                   [this, description = std::move(description)] { failed_(description); });
}

} // namespace quillmere::platform::gtk
