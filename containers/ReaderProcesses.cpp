#include "containers/ReaderProcesses.h"

#include "containers/ArchiveProtocol.h"
#include "containers/ContainerMessages.h"

#include <cerrno>
#include <exception>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace quillmere {

namespace {

constexpr int pipeBytes = 1 << 20;
constexpr int pollMilliseconds = 20;

} // namespace

bool ReaderProcess::awaitAnswer(const Pulse& pulse) const {
    for (;;) {
        pollfd ready{.fd = answers.get(), .events = POLLIN, .revents = 0};
        const int count = ::poll(&ready, 1, pollMilliseconds);
        pulse();
        if (count != 0 && !(count < 0 && errno == EINTR))
            return count > 0;
    }
}

size_t ReaderProcess::readAnswer(std::span<char> buffer) const {
    ssize_t received = 0;
    do
        received = ::read(answers.get(), buffer.data(), buffer.size());
    while (received < 0 && errno == EINTR);
    return received > 0 ? static_cast<size_t>(received) : 0;
}

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

/// Whether the process answers the request. One that does not is dismissed, also when the pulse throws.
bool ReaderProcesses::takes(ReaderProcess& process, const ArchiveRequest& request) {
    std::string expected;
    archiveProtocol::appendPlain(expected, archiveProtocol::Kind::taken);
    std::string word(expected.size(), '\0');
    try {
        size_t received = 0;
        bool isThere = archiveProtocol::sendRequest(process.requests.get(), request);
        while (isThere && received < word.size()) {
            const size_t count =
                process.awaitAnswer(request.pulse) ? process.readAnswer(std::span(word).subspan(received)) : 0;
            received += count;
            isThere = count > 0;
        }
        if (isThere && word == expected)
            return true;
    } catch (...) {
        dismiss(std::move(process));
        throw;
    }
    dismiss(std::move(process));
    return false;
}

ReaderProcess ReaderProcesses::employ(const ArchiveRequest& request) {
    if (auto ready = takeReady(); ready && takes(*ready, request))
        return std::move(*ready);
    try {
        if (ReaderProcess fresh = start(); takes(fresh, request))
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
