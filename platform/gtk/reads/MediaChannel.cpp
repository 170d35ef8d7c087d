#include "platform/gtk/reads/MediaChannel.h"

#include "platform/gtk/glib/Signals.h"
#include "platform/gtk/reads/DescriptorMessage.h"
#include "platform/gtk/reads/FilePour.h"
#include "platform/gtk/reads/ReadProtocol.h"

#include <algorithm>
#include <cerrno>
#include <glib-unix.h>
#include <limits>
#include <sys/socket.h>
#include <system_error>

namespace quillmere::platform::gtk {

namespace {

constexpr guint pause = 5; // milliseconds

using Self = std::shared_ptr<MediaChannel>;

void forget(gpointer data) {
    delete static_cast<Self*>(data);
}

} // namespace

MediaChannel::MediaChannel(FileDescriptor socket, std::shared_ptr<const RegularFile> file, Executors& executors)
    : socket_(std::make_shared<const FileDescriptor>(std::move(socket))), file_(std::move(file)),
      executors_(executors) {}

FileDescriptor MediaChannel::open(std::shared_ptr<const RegularFile> file, Executors& executors) {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0)
        throw std::system_error(errno, std::generic_category(), "socket");
    FileDescriptor theirs(ends[1]);
    const std::shared_ptr<MediaChannel> channel(new MediaChannel(FileDescriptor(ends[0]), std::move(file), executors));
    channel->watch();
    return theirs;
}

void MediaChannel::watch() {
    const auto readable = +[](int, GIOCondition, gpointer data) -> gboolean {
        return guarded(false, [&] { return (*static_cast<Self*>(data))->receive(); });
    };
    g_unix_fd_add_full(G_PRIORITY_DEFAULT, socket_->get(), static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR),
                       readable, new Self(shared_from_this()), forget);
}

void MediaChannel::watchLater() {
    const auto goOn = +[](gpointer data) -> gboolean {
        guarded([&] { (*static_cast<Self*>(data))->watch(); });
        return G_SOURCE_REMOVE;
    };
    g_timeout_add_full(G_PRIORITY_DEFAULT, pause, goOn, new Self(shared_from_this()), forget);
}

/// Whether the socket is still to be watched.
bool MediaChannel::receive() {
    if (file_.use_count() > mostPipes) {
        watchLater();
        return false;
    }
    reads::PipeRequest request;
    // Whatever descriptors come along are closed here.
    const auto received = descriptorMessage::receive(socket_->get(), request);
    if (received.state == descriptorMessage::State::nothing)
        return true;
    const bool isSane = received.state == descriptorMessage::State::received &&
                        request.offset <= static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
    if (!isSane)
        return false;
    answer(request.number, request.offset);
    return true;
}

// Not by way of `this`, which may be gone when the worker comes to it.
void MediaChannel::answer(uint64_t number, uint64_t offset) {
    executors_.userInitiated().submit([socket = socket_, file = file_, &executors = executors_, number, offset] {
        guarded([&] {
            const uint64_t size = file->size();
            const auto pour =
                FilePour::make(file, {.offset = offset, .length = size - std::min(size, offset)}, capacity, executors);
            const auto end = pour->takeReadEnd();
            if (descriptorMessage::send(socket->get(), reads::PipeReply{.number = number, .size = size}, end.get()))
                pour->run();
        });
    });
}

} // namespace quillmere::platform::gtk
