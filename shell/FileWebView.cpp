#include "shell/FileWebView.h"

namespace quillmere {

using platform::DragOperation;
using platform::NavigationDecision;

FileWebView::FileWebView(std::unique_ptr<platform::WebView> web, std::weak_ptr<Host> host)
    : web_(std::move(web)), host_(std::move(host)) {}

std::shared_ptr<FileWebView> FileWebView::make(std::unique_ptr<platform::WebView> web, std::weak_ptr<Host> host) {
    std::shared_ptr<FileWebView> made(new FileWebView(std::move(web), std::move(host)));
    made->web_->setClient(made);
    return made;
}

NavigationDecision FileWebView::decideNavigation(const std::optional<std::string>& url) {
    const auto host = host_.lock();
    return host ? host->decideNavigation(url) : NavigationDecision::cancel;
}

void FileWebView::didFailProvisionalNavigation(const std::string& description) {
    if (const auto host = host_.lock())
        host->didFailProvisionalNavigation(description);
}

void FileWebView::contentProcessDidTerminate() {
    if (const auto host = host_.lock())
        host->contentProcessDidTerminate();
}

void FileWebView::didReceiveScriptMessage(const platform::ScriptMessage& message) {
    if (const auto host = host_.lock())
        host->didReceiveScriptMessage(message);
}

DragOperation FileWebView::draggingEntered(const std::vector<FileUrl>& files) {
    return files.empty() ? DragOperation::none : DragOperation::copy;
}

bool FileWebView::performDragOperation(const std::vector<FileUrl>& files) {
    if (files.empty())
        return false;
    if (onDrop)
        onDrop(files.front());
    return true;
}

} // namespace quillmere
