#pragma once

#include "appearance/BackgroundView.h"
#include "platform/Platform.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quillmere {

/// The one window and its layers, from the bottom: background, page, the platform's own preview, toolbar, loading
/// indicator. Main thread only.
class MainWindow {
public:
    /// What the toolbar's buttons do.
    struct Actions {
        std::function<void()> openDialog;
        std::function<void()> showSettings;
    };

    /// Makes the window with its background, centred and not yet shown. The platform outlives it.
    MainWindow(const platform::Platform& platform, std::weak_ptr<platform::WindowClient> client);

    platform::Window& window() noexcept { return *window_; }
    std::weak_ptr<platform::Window> weakWindow() const { return window_; }
    BackgroundView& background() noexcept { return background_; }

    void addPage(const view::ViewRef& page);
    /// A missing symbol stops the process.
    void addToolbar(Actions actions);

    void showStartupLoading();
    void hideStartupLoading();
    /// The page cannot be had; nothing more is tried.
    void showStartupError(const std::string& description);

    void showInTitle(const std::string& name, std::optional<FileUrl> file);
    /// Lays the platform's own preview of the file over the page, `top` points below the upper edge. False where there
    /// is no such preview.
    bool showPreview(const FileUrl& file, double top);
    void removePreview();

    const view::ViewRef& settingsButton() const noexcept { return settingsButton_; }

private:
    platform::Toolkit& toolkit_;
    platform::Dialogs& dialogs_;
    std::shared_ptr<platform::Window> window_;
    view::ViewRef content_; // root of the window's content
    BackgroundView background_;
    view::ViewRef toolbar_;
    view::ViewRef settingsButton_;
    view::ViewRef preview_;
    view::ViewRef startupLoading_;
};

} // namespace quillmere
