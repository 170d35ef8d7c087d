#pragma once

#include "platform/Dialogs.h"
#include "platform/Services.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// What the file system knows of a bundle's folder; what it does not know is absent.
struct FileAttributes {
    std::optional<uint64_t> fileSystemNumber{};
    std::optional<uint64_t> fileNumber{};
    std::optional<std::string> creationDate{};
};

/// The installation: whether this copy is the installed one, and what it may offer the user then. Main thread only.
class AppLifecycleController {
public:
    struct Host {
        platform::Dialogs& dialogs;
        platform::Bundle& bundle;
        FileUrl home;
    };

    /// `owner` is the window to which sheets attach; once it is gone nothing is shown.
    AppLifecycleController(std::weak_ptr<platform::Window> owner, Host host);

    /// Whether a bundle of this identifier lies directly in one of the folders, under its own name.
    static bool installedBundle(const FileUrl& bundle, const std::optional<std::string>& identifier,
                                const std::vector<FileUrl>& applications);
    /// Tells one installation from another: the same for every start of a copy, another after a move or a replacement.
    static std::string installationIdentity(const FileUrl& bundle, const FileAttributes& attributes);

    bool installed() const;
    std::string installIdentity() const;
    /// Whether an uninstall is under way.
    bool removing() const noexcept { return removing_; }

    /// Called when the page is ready and each time the window comes to the front.
    void showFirstRunIfNeeded();
    /// Tells the user of a copy that is not installed why it cannot become a default viewer.
    void chooseDefaultType();
    /// Tells the user of a copy that is not installed why it cannot remove itself.
    void confirmUninstall();

private:
    void notify(std::string title, std::string text);

    std::weak_ptr<platform::Window> owner_;
    bool removing_ = false;
    Host host_;
};

} // namespace quillmere
