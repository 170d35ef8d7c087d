#include "containers/ReaderProcesses.h"

#include "containers/ArchiveProtocol.h"
#include "containers/ContainerMessages.h"

#include <cerrno>
#include <exception>
#include <fcntl.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace quillmere {

namespace {

constexpr int pipeBytes = 1 << 20;

} // namespace

ReaderProcess ReaderProcesses::start() const {
    int sockets[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets) != 0)
        throw std::system_error(errno, std::generic_category(), "socketpair");
    FileDescriptor requests(sockets[0]);
    const FileDescriptor theirRequests(sockets[1]);
    auto answers = platform::makePipe();
    // A larger pipe only saves turns; one that cannot grow works as well.
    ::fcntl(answers.readEnd.get(), F_SETPIPE_SZ, pipeBytes);

    platform::ProcessSpec spec{.executable = program_, .environment = std::vector<std::string>{}};
    spec.descriptors = {{.ours = theirRequests.get(), .theirs = STDIN_FILENO},
                        {.ours = answers.writeEnd.get(), .theirs = STDOUT_FILENO}};
    return {.requests = std::move(requests),
            .answers = std::move(answers.readEnd),
            .process = platform::ChildProcess(spec)};
}

std::optional<ReaderProcess> ReaderProcesses::takeReady() {
    const std::lock_guard hold(lock_);
    return std::exchange(ready_, std::nullopt);
}

ReaderProcess ReaderProcesses::employ(const ArchiveRequest& request) {
    // One that stood ready may have been killed meanwhile.
    auto ready = takeReady();
    if (ready && archiveProtocol::sendRequest(ready->requests.get(), request))
        return std::move(*ready);
    try {
        ReaderProcess fresh = start();
        if (archiveProtocol::sendRequest(fresh.requests.get(), request))
            return fresh;
    } catch (const std::system_error&) {
        throw ContainerError(messages::readerNotCreated);
    }
    throw ContainerError(messages::readerNotCreated);
}

void ReaderProcesses::dismiss(ReaderProcess process) noexcept {
    process.process.kill();
    const std::lock_guard hold(lock_);
    try {
        leaving_.push_back(std::move(process.process));
        wanted_ = true;
        if (!thread_.joinable())
            thread_ = std::thread([this] { prepare(); });
        changed_.notify_one();
    } catch (const std::exception&) {
        // Without a thread each request starts a process of its own.
    }
}

/// Sees to the ends of processes and starts the next, until the end of this object.
void ReaderProcesses::prepare() noexcept {
    std::unique_lock hold(lock_);
    for (;;) {
        changed_.wait(hold, [this] { return wanted_ || closing_; });
        if (closing_)
            return;
        wanted_ = false;
        auto ended = std::exchange(leaving_, {});
        const bool isReady = ready_.has_value();
        hold.unlock();
        std::optional<ReaderProcess> next;
        try {
            if (!isReady)
                next = start();
        } catch (const std::exception&) {
            // The next request starts its own.
        }
        ended.clear(); // waits for their ends
        hold.lock();
        if (next && !ready_)
            ready_ = std::move(next);
    }
}

ReaderProcesses::~ReaderProcesses() {
    {
        const std::lock_guard hold(lock_);
        closing_ = true;
    }
    changed_.notify_one();
    if (thread_.joinable())
        thread_.join();
}

} // namespace quillmere
