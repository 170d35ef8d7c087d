#include "helpers/web-process/FilePipes.h"

#include "platform/gtk/reads/DescriptorMessage.h"
#include "platform/gtk/reads/ReadProtocol.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace quillmere::platform::gtk {

FilePipes::Result FilePipes::read(uint64_t offset, std::span<std::byte> buffer, int interruption) {
    const std::lock_guard hold(lock_);
    size_t count = 0;
    while (count < buffer.size()) {
        const uint64_t at = offset + count;
        Pipe* pipe = nearest(at);
        const bool isNew = !pipe;
        auto outcome = isNew ? ask(at, interruption, pipe) : skip(*pipe, at, interruption);
        if (outcome == Outcome::read && pipe->position == at) {
            const auto taken = take(*pipe, buffer.subspan(count), interruption);
            outcome = taken.outcome;
            count += taken.count;
        }
        if (outcome != Outcome::read)
            return {.outcome = outcome, .count = count};
        if (count == buffer.size())
            break;
        // This pipe has come to its end. Unless that is the end of the file, a new one tells what became of it.
        const bool gaveNothing = isNew && pipe->position == at;
        const bool isEnd = pipe->position >= size_;
        close(*pipe);
        if (isEnd || gaveNothing)
            return {.outcome = isEnd ? Outcome::read : Outcome::failed, .count = count};
    }
    return {.outcome = Outcome::read, .count = count};
}

FilePipes::Pipe* FilePipes::nearest(uint64_t offset) {
    Pipe* best = nullptr;
    for (auto& pipe : pipes_)
        if (pipe.position <= offset && offset - pipe.position <= longestSkip &&
            (!best || pipe.position > best->position))
            best = &pipe;
    if (best)
        best->lastUse = ++uses_;
    return best;
}

FilePipes::Outcome FilePipes::ask(uint64_t offset, int interruption, Pipe*& pipe) {
    const reads::PipeRequest request{.number = ++questions_, .offset = offset};
    if (!descriptorMessage::send(channel_.get(), request))
        return Outcome::failed;
    for (;;) {
        if (await(channel_.get(), interruption) == Wait::interrupted)
            return Outcome::interrupted;
        reads::PipeReply reply;
        auto received = descriptorMessage::receive(channel_.get(), reply);
        if (received.state == descriptorMessage::State::closed)
            return Outcome::failed;
        if (received.state == descriptorMessage::State::nothing || reply.number != request.number)
            continue; // the answer to a question that was given up
        if (!received.descriptor)
            return Outcome::failed;
        size_ = reply.size;
        if (pipes_.size() >= mostPipes)
            pipes_.erase(std::ranges::min_element(pipes_, {}, &Pipe::lastUse));
        pipes_.push_back({.end = std::move(received.descriptor), .position = offset, .lastUse = ++uses_});
        pipe = &pipes_.back();
        return Outcome::read;
    }
}

FilePipes::Outcome FilePipes::skip(Pipe& pipe, uint64_t offset, int interruption) {
    std::array<std::byte, size_t{16} * 1024> dropped;
    while (pipe.position < offset) {
        const auto wanted = std::span(dropped).first(std::min<uint64_t>(dropped.size(), offset - pipe.position));
        const auto taken = take(pipe, wanted, interruption);
        if (taken.outcome != Outcome::read || taken.count < wanted.size())
            return taken.outcome;
    }
    return Outcome::read;
}

/// Fewer bytes than wanted, without a failure, mean the end of the pipe.
FilePipes::Result FilePipes::take(Pipe& pipe, std::span<std::byte> buffer, int interruption) {
    size_t count = 0;
    while (count < buffer.size()) {
        // The pipe does not block; who holds the lock waits in poll.
        // NOLINTNEXTLINE(clang-analyzer-unix.BlockInCriticalSection)
        const ssize_t got = ::read(pipe.end.get(), buffer.data() + count, buffer.size() - count);
        if (got == 0)
            break;
        if (got > 0) {
            count += static_cast<size_t>(got);
            pipe.position += static_cast<uint64_t>(got);
        } else if (errno == EAGAIN) {
            if (await(pipe.end.get(), interruption) == Wait::interrupted)
                return {.outcome = Outcome::interrupted, .count = count};
        } else if (errno != EINTR) {
            return {.outcome = Outcome::failed, .count = count};
        }
    }
    return {.outcome = Outcome::read, .count = count};
}

FilePipes::Wait FilePipes::await(int descriptor, int interruption) {
    std::array<pollfd, 2> watched{pollfd{.fd = interruption, .events = POLLIN, .revents = 0},
                                  pollfd{.fd = descriptor, .events = POLLIN, .revents = 0}};
    while (::poll(watched.data(), watched.size(), -1) < 0 && errno == EINTR) {
    }
    return watched[0].revents != 0 ? Wait::interrupted : Wait::ready;
}

void FilePipes::close(const Pipe& pipe) {
    pipes_.erase(pipes_.begin() + (&pipe - pipes_.data()));
}

} // namespace quillmere::platform::gtk
