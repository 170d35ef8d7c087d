#pragma once

#include "platform/Services.h"

namespace quillmere::platform::gtk {

/// The desktop's applications, its Trash and its file manager.
class DesktopWorkspace final : public Workspace {
public:
    /// `dataFolder` is the user's own; absent, nothing can be registered. The references outlive the workspace.
    DesktopWorkspace(std::optional<FileUrl> dataFolder, const Bundle& bundle, const ContentTypes& types)
        : dataFolder_(std::move(dataFolder)), bundle_(bundle), types_(types) {}

    int registerApplication(const FileUrl& bundle) override;
    std::optional<std::string> setDefaultApplication(const FileUrl& bundle, const std::string& type) override;
    std::optional<FileUrl> applicationFor(const std::string& type) override;
    /// A bundle that goes there is no longer registered.
    Recycled recycle(const std::vector<FileUrl>& files) override;
    void reveal(const FileUrl& file) override;

private:
    std::optional<FileUrl> dataFolder_;
    const Bundle& bundle_;
    const ContentTypes& types_;
};

/// The MIME types of the bundle's document types, each once, and that of folders.
std::vector<std::string> documentMimeTypes(const Bundle& bundle, const ContentTypes& types);

} // namespace quillmere::platform::gtk
