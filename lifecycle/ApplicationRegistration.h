#pragma once

#include "platform/Executors.h"
#include "platform/Services.h"

#include <functional>
#include <string>
#include <vector>

namespace quillmere {

/// Makes the document types of the installed copy known to the desktop.
class ApplicationRegistration {
public:
    struct Host {
        platform::Bundle& bundle;
        platform::Workspace& workspace;
        platform::Executors& executors;
        FileUrl home;
        std::function<void(const std::string&)> log; // any thread
    };

    /// Whether the bundle lies in one of the folders, at any depth. Neither its name nor its identifier is asked.
    static bool isInstalledBundle(const FileUrl& bundle, const std::vector<FileUrl>& applicationsDirectories);

    /// Registers the running bundle in the background if it is an installed copy. A failure is only logged.
    static void refreshInstalledBundle(const Host& host);
};

} // namespace quillmere
