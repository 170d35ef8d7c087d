#pragma once

#include "base/FileUrl.h"

#include <memory>

namespace quillmere::platform {

/// A work folder of its own, named by a fresh UUID, removed with everything in it when the last reference goes (errors
/// of the removal are ignored), or by `removeAll` at the end of the program.
class TemporaryFolder {
public:
    /// Makes it inside `parent`, which is made too. Throws the file system's error.
    static std::shared_ptr<const TemporaryFolder> makeInside(const FileUrl& parent);

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const FileUrl& url() const noexcept { return url_; }

    /// Removes every temporary folder that still exists, and lets no other be made: for the end of the program, whose
    /// workers are waited for only while they remove a folder, and not for long. Any thread.
    static void removeAll() noexcept;

private:
    explicit TemporaryFolder(FileUrl url);

    FileUrl url_;
};

} // namespace quillmere::platform
