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

/// A running reader program, for one archive.
struct ReaderProcess {
    FileDescriptor requests; ///< socket; it takes one request
    FileDescriptor answers;  ///< pipe of frames (ArchiveProtocol.h)
    platform::ChildProcess process;

    /// Waits until it has said something or has gone, asking the pulse every 20 ms. False when waiting is impossible.
    bool awaitAnswer(const Pulse& pulse) const;
    /// Some of what it said, as far as there is room; 0 once it has gone.
    size_t readAnswer(std::span<char> buffer) const;
};

/// The processes that read archives. From the first use on one stands ready, loaded and locked down, for the archive
/// that comes next: starting a program would take longer than reading most archives. A thread of its own starts it, so
/// that no listing waits. Any thread.
class ReaderProcesses {
public:
    explicit ReaderProcesses(FileUrl program) : program_(std::move(program)) {}
    ~ReaderProcesses();
    ReaderProcesses(const ReaderProcesses&) = delete;
    ReaderProcesses& operator=(const ReaderProcesses&) = delete;

    /// A process that has taken the request. One that stood ready and has died meanwhile is replaced by a fresh one.
    /// Throws ContainerError when that does not answer either, and what the request's pulse throws.
    ReaderProcess employ(const ArchiveRequest& request);
    /// Kills a process, without waiting for its end, and gets the next one ready.
    void dismiss(ReaderProcess process) noexcept;

private:
    ReaderProcess start() const;
    std::optional<ReaderProcess> takeReady();
    bool takes(ReaderProcess& process, const ArchiveRequest& request);
    void prepare() noexcept;

    const FileUrl program_;
    std::mutex lock_;
    std::condition_variable changed_;
    std::optional<ReaderProcess> ready_;
    std::vector<platform::ChildProcess> leaving_; ///< killed, their end not yet seen
    bool wanted_ = false;                         ///< the thread has something to do
    bool closing_ = false;
    std::thread thread_;
};

} // namespace quillmere
