#include "platform/gtk/scheme/SchemeTasks.h"

namespace quillmere::platform::gtk {

SchemeTasks::SchemeTasks(WebKitWebContext* context, const std::string& scheme, SchemeHandler& handler)
    : live_(std::make_shared<Live>(handler)) {
    const auto begin = +[](WebKitURISchemeRequest* request, gpointer data) {
        guarded([&] { start(**static_cast<std::shared_ptr<Live>*>(data), request); });
    };
    const auto forget = +[](gpointer data) { delete static_cast<std::shared_ptr<Live>*>(data); };
    webkit_web_context_register_uri_scheme(context, scheme.c_str(), begin, new std::shared_ptr<Live>(live_), forget);

    // Module workers, WebAssembly and fetch of the own scheme need both.
    auto* security = webkit_web_context_get_security_manager(context);
    webkit_security_manager_register_uri_scheme_as_secure(security, scheme.c_str());
    webkit_security_manager_register_uri_scheme_as_cors_enabled(security, scheme.c_str());
}

SchemeTasks::~SchemeTasks() {
    live_->closed = true;
    for (const auto& weak : std::exchange(live_->tasks, {})) {
        if (const auto task = weak.lock())
            task->stop();
    }
}

void SchemeTasks::start(Live& live, WebKitURISchemeRequest* request) {
    if (live.closed) {
        const GlibError error(g_error_new_literal(G_IO_ERROR, G_IO_ERROR_CLOSED, "The view is closed."));
        webkit_uri_scheme_request_finish_error(request, error.get());
        return;
    }
    // The web view stops a task on this thread, and long after this object's end if it likes: the handler is asked only
    // while the task that it knows is alive.
    const auto identity = std::make_shared<std::weak_ptr<DesktopSchemeTask>>();
    const auto task = std::make_shared<DesktopSchemeTask>(request, live.flow, [&handler = live.handler, identity] {
        if (const auto stopped = identity->lock())
            handler.stop(*stopped);
    });
    *identity = task;
    std::erase_if(live.tasks, [](const auto& known) { return known.expired(); });
    live.tasks.push_back(task);
    live.handler.start(task);
}

} // namespace quillmere::platform::gtk
