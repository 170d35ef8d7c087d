#pragma once

#include "base/FileUrl.h"

#include <optional>
#include <string>
#include <vector>

namespace quillmere::platform::gtk {

/// What the desktop knows of a copy of the program, in one data folder: its entry with the types that it opens, its
/// icons, and a list of the applications that opened these types before, which go on doing so. Any thread.
class DesktopRegistration {
public:
    explicit DesktopRegistration(FileUrl dataFolder) : dataFolder_(std::move(dataFolder)) {}

    /// Writes or refreshes it. Status: 0; the system's error number; 127 when the desktop's database tool is missing,
    /// or that tool's own status.
    int add(const FileUrl& bundle, const std::vector<std::string>& types) const;
    /// Takes back what was written for this bundle; nothing when another copy is registered.
    void remove(const FileUrl& bundle) const noexcept;
    /// The copy that is registered.
    std::optional<FileUrl> bundle() const;

    /// The desktop's file manager asks this copy for previews from its next start on.
    void answerPreviews(const FileUrl& bundle) const;

private:
    FileUrl entry() const;
    FileUrl previewService() const;
    void copyIcons(const FileUrl& resources) const;
    void removeIcons() const;
    void keepDefaults(const std::vector<std::string>& types) const;

    FileUrl dataFolder_;
};

/// The bundle of a program that lies in one.
std::optional<FileUrl> bundleOfProgram(const FileUrl& program);

} // namespace quillmere::platform::gtk
