#include "lifecycle/ApplicationRegistration.h"

#include "lifecycle/InstalledCopy.h"

#include <unistd.h>

namespace quillmere {

bool ApplicationRegistration::isInstalledBundle(const FileUrl& bundle,
                                                const std::vector<FileUrl>& applicationsDirectories) {
    if (bundle.lowerExtension() != "app")
        return false;
    const std::string path = normalised(bundle).path();
    for (const auto& directory : applicationsDirectories) {
        const std::string folder = normalised(directory).path();
        if (path.size() > folder.size() && path.starts_with(folder) && (folder == "/" || path[folder.size()] == '/'))
            return true;
    }
    return false;
}

void ApplicationRegistration::refreshInstalledBundle(const Host& host) {
    const FileUrl bundle = host.bundle.url();
    if (host.bundle.identifier() != bundleIdentifier || !isInstalledBundle(bundle, applicationsFolders(host.home)))
        return;
    if (::access(bundle.appending(bundlePropertyList).path().c_str(), R_OK) != 0)
        return;
    host.executors.utility().submit([bundle, workspace = &host.workspace, log = host.log] {
        const int status = workspace->registerApplication(bundle);
        if (status != 0)
            log("Quillmere could not refresh document registration (" + std::to_string(status) + ")");
    });
}

} // namespace quillmere
