#include "platform/gtk/reads/DescriptorMessage.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>

namespace quillmere::platform::gtk::descriptorMessage {

namespace {

struct Control {
    alignas(cmsghdr) std::byte bytes[CMSG_SPACE(sizeof(int))]{};
};

/// The one descriptor of a message; all others are closed.
FileDescriptor takeDescriptor(msghdr& header) noexcept {
    FileDescriptor first;
    for (auto* part = CMSG_FIRSTHDR(&header); part; part = CMSG_NXTHDR(&header, part)) {
        if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS)
            continue;
        const size_t count = (part->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (size_t i = 0; i < count; ++i) {
            int number = -1;
            std::memcpy(&number, CMSG_DATA(part) + i * sizeof(int), sizeof number);
            FileDescriptor descriptor(number);
            if (!first)
                first = std::move(descriptor);
        }
    }
    return first;
}

} // namespace

bool send(int socket, std::span<const std::byte> message, int descriptor) noexcept {
    iovec text{.iov_base = const_cast<std::byte*>(message.data()), .iov_len = message.size()};
    Control control;
    msghdr header{};
    header.msg_iov = &text;
    header.msg_iovlen = 1;
    if (descriptor >= 0) {
        header.msg_control = control.bytes;
        header.msg_controllen = sizeof control.bytes;
        auto* part = CMSG_FIRSTHDR(&header);
        part->cmsg_level = SOL_SOCKET;
        part->cmsg_type = SCM_RIGHTS;
        part->cmsg_len = CMSG_LEN(sizeof descriptor);
        std::memcpy(CMSG_DATA(part), &descriptor, sizeof descriptor);
    }
    ssize_t sent = 0;
    do
        sent = ::sendmsg(socket, &header, MSG_DONTWAIT | MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(message.size());
}

Received receive(int socket, std::span<std::byte> message) noexcept {
    iovec text{.iov_base = message.data(), .iov_len = message.size()};
    Control control;
    msghdr header{};
    header.msg_iov = &text;
    header.msg_iovlen = 1;
    header.msg_control = control.bytes;
    header.msg_controllen = sizeof control.bytes;
    ssize_t got = 0;
    do
        got = ::recvmsg(socket, &header, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    while (got < 0 && errno == EINTR);
    if (got < 0)
        return {.state = errno == EAGAIN ? State::nothing : State::closed};
    auto descriptor = takeDescriptor(header);
    if (got != static_cast<ssize_t>(message.size()) || (header.msg_flags & MSG_TRUNC) != 0)
        return {.state = State::closed};
    return {.state = State::received, .descriptor = std::move(descriptor)};
}

} // namespace quillmere::platform::gtk::descriptorMessage
