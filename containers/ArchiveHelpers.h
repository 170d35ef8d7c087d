#pragma once

#include "base/FileDescriptor.h"
#include "base/FileUrl.h"
#include "containers/ArchiveReader.h"
#include "platform/common/ChildProcess.h"

#include <mutex>
#include <optional>
#include <vector>

namespace quillmere {

/// A running helper program that reads one archive.
struct ArchiveHelper {
    FileDescriptor requests; ///< socket; it takes one request
    FileDescriptor answers;  ///< pipe of frames (ArchiveProtocol.h)
    platform::ChildProcess process;
};

/// The helpers that read archives. From the first use on one stands ready, loaded and locked down, for the archive that
/// comes next: starting a program would take longer than reading most archives. Any thread.
class ArchiveHelpers {
public:
    explicit ArchiveHelpers(FileUrl program) : program_(std::move(program)) {}

    /// A helper at work on the request. Throws ContainerError when none can be had.
    ArchiveHelper employ(const ArchiveRequest& request);
    /// Kills a helper, without waiting for its end, and gets the next one ready.
    void dismiss(ArchiveHelper helper) noexcept;

private:
    ArchiveHelper start() const;
    std::optional<ArchiveHelper> takeReady();

    const FileUrl program_;
    std::mutex lock_;
    std::optional<ArchiveHelper> ready_;
    std::vector<platform::ChildProcess> leaving_; ///< killed, their end not yet seen
};

} // namespace quillmere
