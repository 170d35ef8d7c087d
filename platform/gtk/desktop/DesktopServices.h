#pragma once

#include "platform/Services.h"

#include <gtk/gtk.h>

namespace quillmere::platform::gtk {

/// The clipboard of the display.
class DesktopPasteboard final : public Pasteboard {
public:
    bool setString(const std::string& text) override;
};

/// shared-mime-info through GIO.
class DesktopContentTypes final : public ContentTypes {
public:
    std::optional<std::string> mimeType(const std::string& extension) const override;
};

/// Registers the program with the desktop by a desktop entry and an icon in the user's data folder.
class DesktopWorkspace final : public Workspace {
public:
    /// `dataFolder` is the user's own; absent, nothing can be registered. The references outlive the workspace.
    DesktopWorkspace(std::optional<FileUrl> dataFolder, const Bundle& bundle, const ContentTypes& types)
        : dataFolder_(std::move(dataFolder)), bundle_(bundle), types_(types) {}

    /// Status: 0; the system's error number; 127 when the desktop's database tool is missing, or that tool's own
    /// status.
    int registerApplication(const FileUrl& bundle) override;

private:
    std::vector<std::string> documentTypes() const;

    std::optional<FileUrl> dataFolder_;
    const Bundle& bundle_;
    const ContentTypes& types_;
};

} // namespace quillmere::platform::gtk
