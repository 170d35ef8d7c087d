#pragma once

#include "platform/Dialogs.h"
#include "platform/gtk/panels/ColorPanel.h"
#include "platform/gtk/panels/FilePanel.h"

namespace quillmere::platform::gtk {

/// Asks the user: alerts as sheets inside the window, file and colour panels as dialogs over it. One panel of each kind
/// at a time: asking again while a file panel is open brings that one to the front and counts as cancelled.
class DesktopDialogs final : public Dialogs {
public:
    /// File panels begin in `folder`, later in that of the last choice.
    explicit DesktopDialogs(FileUrl folder) : folder_(std::move(folder)) {}

    void openPanel(Window& window, const OpenPanelSpec& spec,
                   std::function<void(std::optional<FileUrl>)> completion) override;
    void alert(Window& window, const AlertSpec& spec, std::function<void(size_t)> completion) override;
    void colorPanel(Window& window, ColorPanelSpec spec) override;
    bool hasSheet(const Window& window) const override;
    void beginSheet(Window& window, SheetSpec spec) override;
    void endSheet(Window& window) override;

    /// Closes what is open, unanswered: before the windows below go.
    void closeAll();

private:
    std::unique_ptr<FilePanel> filePanel_;
    std::unique_ptr<ColorPanel> colorPanel_;
    FileUrl folder_;
    LoopTimer refusing_;
};

} // namespace quillmere::platform::gtk
