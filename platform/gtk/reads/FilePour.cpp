#include "platform/gtk/reads/FilePour.h"

#include "platform/gtk/glib/Signals.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <glib-unix.h>
#include <poll.h>
#include <system_error>

namespace quillmere::platform::gtk {

namespace {

constexpr uint64_t mostAtOnce = uint64_t{1024} * 1024;
constexpr int readerPatience = 20; // milliseconds that a worker waits for a reader who is just at it

bool hasRoom(int pipe) {
    pollfd watched{.fd = pipe, .events = POLLOUT, .revents = 0};
    return ::poll(&watched, 1, readerPatience) > 0; // a reader that has gone counts too: the next step finds out
}

} // namespace

FilePour::FilePour(std::shared_ptr<const RegularFile> file, Range range, Executors& executors)
    : file_(std::move(file)), range_(range), executors_(executors) {}

std::shared_ptr<FilePour> FilePour::make(std::shared_ptr<const RegularFile> file, Range range, size_t capacity,
                                         Executors& executors) {
    std::shared_ptr<FilePour> pour(new FilePour(std::move(file), range, executors));
    pour->open(capacity);
    return pour;
}

void FilePour::open(size_t capacity) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    read_.reset(ends[0]);
    write_.reset(ends[1]);
    ::fcntl(ends[1], F_SETPIPE_SZ, static_cast<int>(capacity)); // a smaller one only takes longer
    std::signal(SIGPIPE, SIG_IGN);                              // a reader that has gone is an error, not an end
}

void FilePour::run() {
    while (range_.length > 0) {
        const Step step = canSplice_ ? splice() : copy();
        if (step == Step::over)
            break;
        if (step == Step::full && !hasRoom(write_.get()))
            return awaitRoom();
    }
    write_.reset();
}

FilePour::Step FilePour::splice() noexcept {
    auto at = static_cast<off64_t>(range_.offset);
    const ssize_t moved = ::splice(file_->descriptor(), &at, write_.get(), nullptr, std::min(range_.length, mostAtOnce),
                                   SPLICE_F_MOVE | SPLICE_F_NONBLOCK);
    if (moved < 0 && errno == EINVAL) { // not every file system can
        canSplice_ = false;
        return Step::moved;
    }
    return after(moved);
}

FilePour::Step FilePour::copy() {
    std::array<std::byte, size_t{64} * 1024> block;
    const size_t count = file_->read(range_.offset, block.data(), std::min<uint64_t>(range_.length, block.size()));
    return count == 0 ? Step::over : after(::write(write_.get(), block.data(), count));
}

FilePour::Step FilePour::after(ssize_t moved) noexcept {
    if (moved < 0 && errno == EAGAIN)
        return Step::full;
    if (moved < 0 && errno == EINTR)
        return Step::moved;
    if (moved <= 0)
        return Step::over; // the end of the file, a disk error, or the reader has gone
    range_.offset += static_cast<uint64_t>(moved);
    range_.length -= static_cast<uint64_t>(moved);
    return Step::moved;
}

void FilePour::awaitRoom() {
    using Self = std::shared_ptr<FilePour>;
    executors_.main().post([self = shared_from_this()] {
        const auto hasRoom = +[](int, GIOCondition, gpointer data) -> gboolean {
            const auto& waiting = *static_cast<Self*>(data);
            guarded([&] {
                waiting->executors_.userInitiated().submit([pour = waiting] { guarded([&] { pour->run(); }); });
            });
            return G_SOURCE_REMOVE;
        };
        const auto forget = +[](gpointer data) { delete static_cast<Self*>(data); };
        g_unix_fd_add_full(G_PRIORITY_DEFAULT, self->write_.get(),
                           static_cast<GIOCondition>(G_IO_OUT | G_IO_ERR | G_IO_HUP), hasRoom, new Self(self), forget);
    });
}

} // namespace quillmere::platform::gtk
