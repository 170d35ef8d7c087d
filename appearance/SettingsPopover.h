#pragma once

#include "appearance/SettingsController.h"
#include "platform/Dialogs.h"

namespace quillmere {

/// Opens and closes the settings panel below its button, with a fresh controller each time. Owned by a shared pointer,
/// since the panel's callbacks hold it weakly. Main thread only.
class SettingsPopover : public std::enable_shared_from_this<SettingsPopover> {
public:
    /// What it needs from its owner.
    class Host {
    public:
        virtual ~Host() = default;
        /// None before the window is built, or after it has gone.
        virtual platform::Window* settingsWindow() = 0;
        virtual view::ViewRef settingsAnchor() = 0;
        virtual AppearancePreferences currentPreferences() const = 0;
        /// Takes what the panel has changed, and saved.
        virtual void preferencesChanged(const AppearancePreferences& preferences) = 0;
        virtual void pickBackground() = 0;
        virtual void chooseDefaultType() = 0;
        virtual void confirmUninstall() = 0;
    };
    struct Services {
        platform::UserDefaults& defaults;
        platform::Dialogs& dialogs;
        std::optional<FileUrl> resources{};
    };

    /// The host and the services outlive it.
    SettingsPopover(Host& host, Services services) : host_(host), services_(std::move(services)) {}

    /// Opens the panel, or closes it when it is shown.
    void toggle();
    void close();

private:
    SettingsController::Callbacks callbacks();
    void explainDefaults();
    void showColors(view::Color color, std::function<void(view::Color)> changed);

    Host& host_;
    Services services_;
    std::shared_ptr<SettingsController> controller_; // of the panel that was opened last
};

} // namespace quillmere
