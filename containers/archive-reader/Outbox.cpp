#include "containers/archive-reader/Outbox.h"

#include "containers/ArchiveProtocol.h"

#include <cerrno>
#include <chrono>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace quillmere {

namespace {

constexpr std::chrono::seconds aliveInterval{1};
constexpr std::chrono::milliseconds gatherTime{2};

} // namespace

Outbox::Outbox(int descriptor) : descriptor_(descriptor), thread_([this] { run(); }) {}

Outbox::~Outbox() {
    {
        const std::lock_guard hold(mutex_);
        closed_ = true;
    }
    work_.notify_one();
    thread_.join();
}

void Outbox::run() {
    std::string sending;
    std::unique_lock hold(mutex_);
    for (;;) {
        work_.wait_for(hold, aliveInterval, [this] { return closed_ || !pending_.empty(); });
        if (pending_.empty() && closed_)
            return;
        if (pending_.empty())
            archiveProtocol::appendPlain(pending_, archiveProtocol::Kind::alive);
        else
            work_.wait_for(hold, gatherTime, [this] { return isUrgent(); });
        sending.clear();
        std::swap(sending, pending_);
        hold.unlock();
        room_.notify_one();
        write(sending);
        hold.lock();
    }
}

void Outbox::write(const std::string& bytes) const {
    for (std::string_view rest = bytes; !rest.empty();) {
        const ssize_t count = ::write(descriptor_, rest.data(), rest.size());
        if (count > 0)
            rest.remove_prefix(static_cast<size_t>(count));
        else if (count == 0 || errno != EINTR)
            ::_exit(1); // nobody listens any more
    }
}

} // namespace quillmere
