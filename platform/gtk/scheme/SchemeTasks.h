#pragma once

#include "platform/Scheme.h"
#include "platform/gtk/scheme/DesktopSchemeTask.h"

#include <memory>
#include <string>
#include <vector>

namespace quillmere::platform::gtk {

/// Hands every request of a web context for the private scheme to the handler, and its stops. Main thread only.
class SchemeTasks {
public:
    /// The handler outlives this object; the context may not.
    SchemeTasks(WebKitWebContext* context, const std::string& scheme, SchemeHandler& handler);
    /// Stops every task, so that no serving thread waits for a web view that is gone.
    ~SchemeTasks();
    SchemeTasks(const SchemeTasks&) = delete;
    SchemeTasks& operator=(const SchemeTasks&) = delete;

    /// The view that the requests come from.
    void setPage(WebKitWebView* page) { live_->flow->setPage(page); }
    /// Its page is gone.
    void pageIsGone() { live_->flow->reset(); }

private:
    struct Live {
        explicit Live(SchemeHandler& served) : handler(served) {}
        SchemeHandler& handler;
        const std::shared_ptr<SchemeFlow> flow = std::make_shared<SchemeFlow>();
        bool closed = false;
        std::vector<std::weak_ptr<DesktopSchemeTask>> tasks;
    };
    static void start(Live& live, WebKitURISchemeRequest* request);

    std::shared_ptr<Live> live_;
};

} // namespace quillmere::platform::gtk
