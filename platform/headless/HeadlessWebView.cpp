#include "platform/headless/HeadlessWebView.h"

#include <stdexcept>

namespace quillmere::platform {

HeadlessWebView::HeadlessWebView(const WebViewConfiguration& made)
    : configuration(made), view_(view::View::make(view::Native{.handle = std::make_shared<view::NativeView>()})) {}

void HeadlessWebView::load(const std::string& url, std::chrono::seconds timeout) {
    loads.emplace_back(url, timeout);
}

void HeadlessWebView::post(json::value body) {
    post(ScriptMessage{.body = std::move(body),
                       .mainFrame = true,
                       .frameUrl = configuration.scheme + "://" + configuration.host + "/index.html"});
}

void HeadlessWebView::post(const ScriptMessage& message) {
    if (const auto client = client_.lock())
        client->didReceiveScriptMessage(message);
}

NavigationDecision HeadlessWebView::navigate(const std::optional<std::string>& url) {
    const auto client = client_.lock();
    return client ? client->decideNavigation(url) : NavigationDecision::cancel;
}

void HeadlessWebView::failProvisionalNavigation(const std::string& description) {
    if (const auto client = client_.lock())
        client->didFailProvisionalNavigation(description);
}

void HeadlessWebView::crash() {
    if (const auto client = client_.lock())
        client->contentProcessDidTerminate();
}

DragOperation HeadlessWebView::drag(const std::vector<FileUrl>& files) {
    const auto client = client_.lock();
    return client ? client->draggingEntered(files) : DragOperation::none;
}

bool HeadlessWebView::drop(const std::vector<FileUrl>& files) {
    const auto client = client_.lock();
    return client && client->performDragOperation(files);
}

std::shared_ptr<HeadlessSchemeTask> HeadlessWebView::fetch(SchemeRequest request) {
    auto task = std::make_shared<HeadlessSchemeTask>(std::move(request));
    configuration.schemeHandler->start(task);
    return task;
}

std::vector<JsonObject> HeadlessWebView::calls(const std::string& function) const {
    const std::string before = "window.Quillmere?." + function + "(";
    const std::string after = ");";
    std::vector<JsonObject> found;
    for (const auto& script : scripts) {
        if (!script.starts_with(before) || !script.ends_with(after))
            continue;
        const auto value =
            parseJson(std::string_view(script).substr(before.size(), script.size() - before.size() - after.size()));
        if (!value || !value->is_object())
            throw std::runtime_error("not a call that the page can run: " + script);
        found.push_back(value->get_object());
    }
    return found;
}

} // namespace quillmere::platform
