#include "platform/gtk/web/PageStatus.h"

#include <algorithm>
#include <gdk/x11/gdkx.h>

namespace quillmere::platform::gtk {

namespace {

// Well under what a server takes in one request.
constexpr size_t longestText = 200'000;

constexpr const char* world = "status";

constexpr const char* listener = R"js(window.addEventListener('page-status', event => {
    if (typeof event.detail === 'string')
        window.webkit.messageHandlers.status.postMessage(event.detail);
});)js";

struct UserScriptUnref {
    void operator()(WebKitUserScript* script) const noexcept { webkit_user_script_unref(script); }
};
using UserScript = std::unique_ptr<WebKitUserScript, UserScriptUnref>;

} // namespace

PageStatus::PageStatus(WebKitUserContentManager* manager) {
    connections_.push_back(
        connect(manager, "script-message-received::status", [this](WebKitUserContentManager*, JSCValue* value) {
            if (!jsc_value_is_string(value))
                return;
            const GlibText text(jsc_value_to_string(value));
            text_ = text ? text.get() : "";
            publish();
        }));
    webkit_user_content_manager_register_script_message_handler(manager, "status", world);
    const UserScript script(webkit_user_script_new_for_world(listener, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                                                             WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, world,
                                                             nullptr, nullptr));
    webkit_user_content_manager_add_script(manager, script.get());
}

void PageStatus::showIn(WebKitWebView* view) {
    view_.set(view);
    // The page may have spoken before the window was on the screen.
    connections_.push_back(connect(view, "map", [this](WebKitWebView*) { publish(); }));
}

void PageStatus::publish() {
    const auto view = view_.lock();
    GtkNative* native = view ? gtk_widget_get_native(GTK_WIDGET(view.get())) : nullptr;
    GdkSurface* surface = native ? gtk_native_get_surface(native) : nullptr;
    if (text_.empty() || !surface || !GDK_IS_X11_SURFACE(surface))
        return;
    auto* display = gdk_surface_get_display(surface);
    const auto length = static_cast<int>(std::min(text_.size(), longestText));
    XChangeProperty(gdk_x11_display_get_xdisplay(display), gdk_x11_surface_get_xid(surface),
                    gdk_x11_get_xatom_by_name_for_display(display, "_QUILLMERE_PAGE_STATUS"),
                    gdk_x11_get_xatom_by_name_for_display(display, "UTF8_STRING"), 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(text_.data()), length);
    XFlush(gdk_x11_display_get_xdisplay(display));
}

} // namespace quillmere::platform::gtk
