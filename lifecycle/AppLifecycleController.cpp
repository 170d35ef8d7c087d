#include "lifecycle/AppLifecycleController.h"

#include "lifecycle/InstalledCopy.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace quillmere {

namespace {

FileAttributes attributesOf(const FileUrl& folder) {
    struct statx facts{};
    if (::statx(AT_FDCWD, folder.path().c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &facts) != 0)
        return {};
    FileAttributes attributes;
    attributes.fileSystemNumber = makedev(facts.stx_dev_major, facts.stx_dev_minor);
    attributes.fileNumber = facts.stx_ino;
    if (facts.stx_mask & STATX_BTIME) {
        char nanoseconds[16];
        std::snprintf(nanoseconds, sizeof nanoseconds, "%09u", facts.stx_btime.tv_nsec);
        attributes.creationDate = std::to_string(facts.stx_btime.tv_sec) + "." + nanoseconds;
    }
    return attributes;
}

std::string text(const std::optional<uint64_t>& number) {
    return number ? std::to_string(*number) : std::string();
}

} // namespace

AppLifecycleController::AppLifecycleController(std::weak_ptr<platform::Window> owner, Host host)
    : owner_(std::move(owner)), host_(std::move(host)) {}

bool AppLifecycleController::installedBundle(const FileUrl& bundle, const std::optional<std::string>& identifier,
                                             const std::vector<FileUrl>& applications) {
    if (identifier != bundleIdentifier || bundle.lastPathComponent() != bundleName)
        return false;
    const FileUrl parent = normalised(bundle).parent();
    return std::ranges::any_of(applications, [&](const FileUrl& folder) { return normalised(folder) == parent; });
}

std::string AppLifecycleController::installationIdentity(const FileUrl& bundle, const FileAttributes& attributes) {
    return bundle.standardized().path() + "|" + text(attributes.fileSystemNumber) + "|" + text(attributes.fileNumber) +
           "|" + attributes.creationDate.value_or("");
}

bool AppLifecycleController::installed() const {
    return installedBundle(host_.bundle.url(), host_.bundle.identifier(), applicationsFolders(host_.home));
}

std::string AppLifecycleController::installIdentity() const {
    const FileUrl bundle = host_.bundle.url();
    return installationIdentity(bundle, attributesOf(bundle));
}

void AppLifecycleController::showFirstRunIfNeeded() {
    // Without a guided choice there is nothing to invite to.
}

void AppLifecycleController::chooseDefaultType() {
    if (!installed())
        notify("Install Quillmere first",
               "Drag Quillmere.app to Applications, then open that copy to choose it as a default viewer.");
}

void AppLifecycleController::confirmUninstall() {
    if (!removing_ && !installed())
        notify("This copy is not installed",
               "Uninstall is available for Quillmere.app in Applications. A copy on a disk "
               "image or inside the project folder is not removed by this button.");
}

void AppLifecycleController::notify(std::string title, std::string text) {
    if (const auto window = owner_.lock())
        host_.dialogs.alert(*window, {.message = std::move(title), .informative = std::move(text), .buttons = {"OK"}},
                            [](size_t) {});
}

} // namespace quillmere
