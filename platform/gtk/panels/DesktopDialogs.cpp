#include "platform/gtk/panels/DesktopDialogs.h"

#include "platform/gtk/window/DesktopWindow.h"

namespace quillmere::platform::gtk {

void DesktopDialogs::openPanel(Window& window, const OpenPanelSpec& spec,
                               std::function<void(std::optional<FileUrl>)> completion) {
    if (filePanel_) {
        filePanel_->present();
        refusing_.after(std::chrono::milliseconds{0},
                        [completion = std::move(completion)] { completion(std::nullopt); });
        return;
    }
    auto answer = [this, completion = std::move(completion)](std::optional<FileUrl> file) {
        const auto keep = std::move(filePanel_);
        if (file)
            folder_ = file->parent();
        completion(std::move(file));
    };
    auto* parent = static_cast<DesktopWindow&>(window).handle();
    filePanel_ = std::make_unique<FilePanel>(parent, spec, folder_, std::move(answer));
}

void DesktopDialogs::alert(Window& window, const AlertSpec& spec, std::function<void(size_t)> completion) {
    window.closePopover(); // its surface would lie above the sheet
    static_cast<DesktopWindow&>(window).sheets().present(spec, std::move(completion));
}

void DesktopDialogs::colorPanel(Window& window, ColorPanelSpec spec) {
    if (colorPanel_)
        colorPanel_->follow(std::move(spec));
    else
        colorPanel_ = std::make_unique<ColorPanel>(static_cast<DesktopWindow&>(window).handle(), std::move(spec));
}

bool DesktopDialogs::hasSheet(const Window& window) const {
    return filePanel_ || static_cast<const DesktopWindow&>(window).sheets().isBusy();
}

void DesktopDialogs::beginSheet(Window& window, SheetSpec spec) {
    static_cast<DesktopWindow&>(window).sheets().beginPanel(spec);
}

void DesktopDialogs::endSheet(Window& window) {
    static_cast<DesktopWindow&>(window).sheets().endPanel();
}

void DesktopDialogs::closeAll() {
    filePanel_.reset();
    colorPanel_.reset();
}

} // namespace quillmere::platform::gtk
