#pragma once

#include "base/FileDescriptor.h"
#include "base/FileUrl.h"
#include "containers/ArchiveReader.h"
#include "platform/common/ChildProcess.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace quillmere {

/// A running helper program that reads one archive.
struct ArchiveHelper {
    FileDescriptor requests; ///< socket; it takes one request
    FileDescriptor answers;  ///< pipe of frames (ArchiveProtocol.h)
    platform::ChildProcess process;
};

/// The helpers that read archives. From the first use on one stands ready, loaded and locked down, for the archive that
/// comes next: starting a program would take longer than reading most archives. A thread of its own starts it, so that
/// no listing waits. Any thread.
class ArchiveHelpers {
public:
    explicit ArchiveHelpers(FileUrl program) : program_(std::move(program)) {}
    ~ArchiveHelpers();
    ArchiveHelpers(const ArchiveHelpers&) = delete;
    ArchiveHelpers& operator=(const ArchiveHelpers&) = delete;

    /// A helper at work on the request. Throws ContainerError when none can be had.
    ArchiveHelper employ(const ArchiveRequest& request);
    /// Kills a helper, without waiting for its end, and gets the next one ready.
    void dismiss(ArchiveHelper helper) noexcept;

private:
    ArchiveHelper start() const;
    std::optional<ArchiveHelper> takeReady();
    void prepare() noexcept;

    const FileUrl program_;
    std::mutex lock_;
    std::condition_variable changed_;
    std::optional<ArchiveHelper> ready_;
    std::vector<platform::ChildProcess> leaving_; ///< killed, their end not yet seen
    bool wanted_ = false;                         ///< the thread has something to do
    bool closing_ = false;
    std::thread thread_;
};

} // namespace quillmere
