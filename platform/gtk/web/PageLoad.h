#pragma once

#include "platform/gtk/glib/GObjectRef.h"
#include "platform/gtk/glib/Signals.h"
#include "platform/gtk/web/ReloadPace.h"

#include <webkit/webkit.h>

#include <chrono>
#include <functional>
#include <string>

namespace quillmere::platform::gtk {

/// Brings the one page into the web view, within a time, and again after its process has died. Main thread only.
class PageLoad {
public:
    /// `failed` hears why the page could not be fetched, never from within a call of this object.
    PageLoad(WebKitWebView* web, std::function<void(const std::string&)> failed);

    void load(const std::string& url, std::chrono::seconds timeout);
    /// After a death it takes a moment, longer with each within a minute.
    void reload();
    /// Comes before any `reload` on account of it.
    void processDied();
    void fail(std::string description);

private:
    void start();
    void watch();
    void loadFailed(WebKitLoadEvent stage, const GError& error);

    const GObjectRef<WebKitWebView> web_;
    const std::function<void(const std::string&)> failed_;
    std::string url_;
    std::chrono::seconds limit_{};
    bool committed_ = false; // since the load or the last death of its process
    ReloadPace pace_;
    std::chrono::milliseconds pause_{};
    LoopTimer reload_;
    LoopTimer timeout_;
    LoopTimer failure_;
    SignalConnections signals_;
};

} // namespace quillmere::platform::gtk
