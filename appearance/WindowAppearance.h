#pragma once

#include "appearance/AppearancePreferences.h"
#include "appearance/BackgroundView.h"
#include "base/FileUrl.h"
#include "base/Json.h"
#include "platform/Dialogs.h"
#include "platform/Executors.h"
#include "platform/ImageCodec.h"

#include <memory>
#include <string>

namespace quillmere {

/// Keeps the appearance that the user chose, and brings it to the window and to the page. Owned by a shared pointer,
/// since dialogs and work under way hold it weakly. Main thread only.
class WindowAppearance : public std::enable_shared_from_this<WindowAppearance> {
public:
    /// What it needs from its owner.
    class Host {
    public:
        virtual ~Host() = default;
        /// None before the window is built.
        virtual BackgroundView* background() = 0;
        virtual platform::Window& window() = 0;
        virtual bool pageIsReady() const = 0;
        /// Lets the page read a file; the path under which it can fetch it.
        virtual std::string grant(const FileUrl& file) = 0;
        virtual void applyPlatformPreferences(const JsonObject& preferences) = 0;
        /// The settings give way to another dialog.
        virtual void closeSettings() = 0;
    };
    struct Services {
        platform::UserDefaults& defaults;
        platform::Dialogs& dialogs;
        platform::Executors& executors;
        platform::ImageCodec& images;
        FileUrl support; // the support folder
    };

    /// Loads what is stored. The host and the services outlive it.
    WindowAppearance(Host& host, Services services);

    const AppearancePreferences& preferences() const noexcept { return preferences_; }
    /// Takes what the settings have changed, and saved.
    void setPreferences(AppearancePreferences preferences);

    void applyAppearance();
    /// Lets the user choose a photo of their own; nothing changes when it cannot be read.
    void pickBackground();
    void clearBackground();

private:
    void replacePhoto(const FileUrl& source);
    void usePhoto(std::string photo);

    Host& host_;
    Services services_;
    AppearancePreferences preferences_;
};

} // namespace quillmere
