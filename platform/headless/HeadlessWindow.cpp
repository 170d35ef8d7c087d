#include "platform/headless/HeadlessWindow.h"

#include <utility>

namespace quillmere::platform {

HeadlessWindow::HeadlessWindow(const WindowSpec& made, std::function<void()> onClose)
    : spec(made), title(made.title), onClose_(std::move(onClose)) {}

void HeadlessWindow::makeKeyAndOrderFront() {
    ++ordersFront;
    setKey(true);
}

void HeadlessWindow::setKey(bool nowKey) {
    if (std::exchange(key, nowKey) == nowKey)
        return;
    if (const auto client = client_.lock())
        nowKey ? client->windowDidBecomeKey() : client->windowDidResignKey();
}

void HeadlessWindow::toggleFullScreen() {
    fullScreen = !fullScreen;
    if (const auto client = client_.lock())
        fullScreen ? client->windowDidEnterFullScreen() : client->windowDidExitFullScreen();
}

void HeadlessWindow::showPopover(view::ViewRef shown, const view::ViewRef& anchor) {
    popover = std::move(shown);
    popoverAnchor = anchor;
}

void HeadlessWindow::performClose() {
    closed = true;
    onClose_();
}

} // namespace quillmere::platform
