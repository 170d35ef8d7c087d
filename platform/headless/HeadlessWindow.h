#pragma once

#include "platform/Window.h"

#include <functional>

namespace quillmere::platform {

/// A window in memory. The fields show what was asked of it; the last group acts as the user and the desktop do.
class HeadlessWindow : public Window {
public:
    HeadlessWindow(const WindowSpec& made, std::function<void()> onClose);

    void setClient(std::weak_ptr<WindowClient> client) override { client_ = std::move(client); }
    void setContent(view::ViewRef root) override { content = std::move(root); }
    void setTitle(std::string text) override { title = std::move(text); }
    void setRepresentedFile(std::optional<FileUrl> file) override { representedFile = std::move(file); }
    void center() override { centered = true; }
    void makeKeyAndOrderFront() override;
    bool isFullScreen() const override { return fullScreen; }
    void toggleFullScreen() override;
    void miniaturize() override { miniaturized = true; }
    void performClose() override;
    void performDrag() override { ++drags; }
    double contentHeight() const override { return spec.contentSize.height; }
    std::optional<double> screenHeight() const override { return 900; }
    void showPopover(view::ViewRef shown, const view::ViewRef& anchor) override;
    void closePopover() override { popover = nullptr; }
    bool isPopoverShown() const override { return popover != nullptr; }

    void setKey(bool key);

    const WindowSpec spec;
    view::ViewRef content;
    std::string title;
    std::optional<FileUrl> representedFile;
    bool centered = false;
    int ordersFront = 0;
    bool key = false;
    bool fullScreen = false;
    bool miniaturized = false;
    bool closed = false;
    int drags = 0;
    view::ViewRef popover; // none while none is shown
    view::ViewRef popoverAnchor;

private:
    std::weak_ptr<WindowClient> client_;
    std::function<void()> onClose_;
};

} // namespace quillmere::platform
