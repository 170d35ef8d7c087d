#include "containers/ArchiveHelpers.h"

#include "containers/ArchiveProtocol.h"
#include "containers/ContainerMessages.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace quillmere {

namespace {

constexpr int pipeBytes = 1 << 20;

} // namespace

ArchiveHelper ArchiveHelpers::start() const {
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

std::optional<ArchiveHelper> ArchiveHelpers::takeReady() {
    const std::lock_guard hold(lock_);
    return std::exchange(ready_, std::nullopt);
}

ArchiveHelper ArchiveHelpers::employ(const ArchiveRequest& request) {
    // One that stood ready may have been killed meanwhile.
    auto ready = takeReady();
    if (ready && archiveProtocol::sendRequest(ready->requests.get(), request))
        return std::move(*ready);
    try {
        ArchiveHelper helper = start();
        if (archiveProtocol::sendRequest(helper.requests.get(), request))
            return helper;
    } catch (const std::system_error&) {
        throw ContainerError(messages::readerNotCreated);
    }
    throw ContainerError(messages::readerNotCreated);
}

void ArchiveHelpers::dismiss(ArchiveHelper helper) noexcept {
    helper.process.kill();
    const std::lock_guard hold(lock_);
    try {
        std::erase_if(leaving_, [](platform::ChildProcess& process) { return !process.isRunning(); });
        leaving_.push_back(std::move(helper.process));
        if (!ready_)
            ready_ = start();
    } catch (const std::exception&) {
        ready_.reset(); // the next request starts its own
    }
}

} // namespace quillmere
