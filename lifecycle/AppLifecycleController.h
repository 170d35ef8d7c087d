#pragma once

#include "lifecycle/DefaultViewer.h"
#include "lifecycle/LifecycleSheet.h"
#include "platform/Application.h"
#include "platform/Dialogs.h"
#include "platform/Executors.h"
#include "platform/Services.h"
#include "platform/Toolkit.h"

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

/// The installation: whether this copy is the installed one, and what it then offers the user: to become the default
/// viewer of a type, and to remove itself. Owned by a shared pointer, since sheets and work under way hold it weakly.
/// Main thread only.
class AppLifecycleController : public std::enable_shared_from_this<AppLifecycleController> {
public:
    /// What it works with; the references outlive it.
    struct Host {
        platform::Application& application;
        platform::Executors& executors;
        platform::Toolkit& toolkit;
        platform::Dialogs& dialogs;
        platform::UserDefaults& defaults;
        platform::Workspace& workspace;
        platform::ContentTypes& contentTypes;
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

    /// Invites the user, once per installation. Called when the page is ready and each time the window becomes key.
    void showFirstRunIfNeeded();
    /// Has the user choose an example of the type that this copy is to open.
    void chooseDefaultType();
    void confirmUninstall();

    enum class Dismissal { byAction, byCloseButton };
    /// Shows the sheet unless one is attached already, which then loses nothing: the request is dropped.
    void present(LifecycleSheet sheet, Dismissal dismissal);
    /// Takes the sheet away; what is to follow runs on a later turn of the main loop.
    void dismiss(std::function<void()> completion);

private:
    void setDefault(const FileUrl& example);
    void askForDefault(const std::string& extension, const std::string& type);
    void removeInstalledApp();
    void finishRemoval(const FileUrl& target, const platform::Recycled& recycled);
    bool isVerified(const FileUrl& bundle) const;
    /// Answers a request of the user at once, or not at all while a sheet waits for an answer.
    void explain(const LifecycleNotice& notice);
    void notify(const LifecycleNotice& notice);

    std::weak_ptr<platform::Window> owner_;
    view::ViewRef sheet_; // while it is shown
    bool removing_ = false;
    Host host_;
};

} // namespace quillmere
