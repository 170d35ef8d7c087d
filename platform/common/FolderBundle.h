#pragma once

#include "platform/Services.h"

namespace quillmere::platform {

/// A bundle as a folder: `Contents/Info.plist`, `Contents/Resources`, `Contents/Helpers`, `Contents/MacOS`.
class FolderBundle final : public Bundle {
public:
    explicit FolderBundle(FileUrl bundle);

    /// The bundle around the running program. A program that lies in none gets the folder that it lies in, which then
    /// has neither resources nor a property list.
    static FolderBundle ofRunningProgram();

    FileUrl url() const override { return bundle_; }
    std::optional<std::string> identifier() const override;
    std::optional<FileUrl> resources() const override;
    FileUrl helper(const std::string& name) const override;
    std::optional<JsonObject> propertyList() const override;

private:
    FileUrl bundle_;
};

} // namespace quillmere::platform
