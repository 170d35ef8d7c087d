#include "platform/gtk/web/WebViewBridge.h"

namespace quillmere::platform::gtk {

namespace {

constexpr const char* world = "shell";

struct UserScriptUnref {
    void operator()(WebKitUserScript* script) const noexcept { webkit_user_script_unref(script); }
};
using UserScript = std::unique_ptr<WebKitUserScript, UserScriptUnref>;

// The event carries text only: objects do not pass from one script world to another. A string that nobody may want is
// not carried, so that its message still arrives and can be answered.
constexpr const char* pageScript = R"js(((name, longest) => {
    const handler = Object.freeze({
        postMessage(message) {
            const text = JSON.stringify(message, (key, value) =>
                typeof value === 'string' && value.length > longest ? null : value);
            if (text !== undefined)
                window.dispatchEvent(new CustomEvent('shell-message', { detail: text }));
        },
    });
    const handlers = Object.freeze({ [name]: handler });
    Object.defineProperty(window, 'webkit', { value: Object.freeze({ messageHandlers: handlers }) });
}))js";

constexpr const char* shellScript = R"js((name => {
    window.addEventListener('shell-message', event => {
        if (typeof event.detail === 'string')
            window.webkit.messageHandlers[name].postMessage(event.detail);
    });
}))js";

std::string applied(const char* function, const std::string& handler) {
    return std::string(function) + "(" + scriptJson(json::string(handler)).value_or("''") + ", " +
           std::to_string(WebViewBridge::longestString) + ");";
}

enum class ScriptWorld { page, shell };

void addScript(WebKitUserContentManager* manager, const std::string& source, ScriptWorld where) {
    constexpr auto frames = WEBKIT_USER_CONTENT_INJECT_TOP_FRAME;
    constexpr auto time = WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START;
    const UserScript script(
        where == ScriptWorld::page
            ? webkit_user_script_new(source.c_str(), frames, time, nullptr, nullptr)
            : webkit_user_script_new_for_world(source.c_str(), frames, time, world, nullptr, nullptr));
    webkit_user_content_manager_add_script(manager, script.get());
}

} // namespace

WebViewBridge::WebViewBridge(WebKitUserContentManager* manager, const std::string& handler,
                             const std::optional<std::string>& userScript, std::function<void(json::value)> received) {
    connection_ = connect(manager, ("script-message-received::" + handler).c_str(),
                          [received = std::move(received)](WebKitUserContentManager*, JSCValue* value) {
                              if (auto body = bodyOf(value))
                                  received(std::move(*body));
                          });
    webkit_user_content_manager_register_script_message_handler(manager, handler.c_str(), world);
    addScript(manager, applied(shellScript, handler), ScriptWorld::shell);
    addScript(manager, applied(pageScript, handler), ScriptWorld::page);
    if (userScript)
        addScript(manager, *userScript, ScriptWorld::page);
}

std::optional<json::value> WebViewBridge::bodyOf(JSCValue* value) {
    if (!jsc_value_is_string(value))
        return std::nullopt;
    const GlibBytes text(jsc_value_to_string_as_bytes(value));
    size_t size = 0;
    const auto* bytes = text ? static_cast<const char*>(g_bytes_get_data(text.get(), &size)) : nullptr;
    if (!bytes || size > messageLimit)
        return std::nullopt;
    return parseJson({bytes, size});
}

} // namespace quillmere::platform::gtk
