#include "helpers/archive-reader/Outbox.h"

#include "base/FileDescriptor.h"
#include "containers/ArchiveProtocol.h"

#include <cerrno>
#include <string_view>
#include <sys/time.h>
#include <unistd.h>

namespace quillmere {

namespace {

constexpr int tickMicroseconds = 100'000;

Outbox* current = nullptr; // for the signal

void setTimer(int microseconds) {
    const timeval interval{.tv_sec = 0, .tv_usec = microseconds};
    const itimerval timer{.it_interval = interval, .it_value = interval};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
}

} // namespace

Outbox::Outbox(int descriptor) : descriptor_(descriptor) {
    pending_.reserve(2 * archiveProtocol::maxData);
    current = this;
    struct sigaction action{};
    action.sa_handler = tick;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGALRM, &action, nullptr);
    setTimer(tickMicroseconds);
}

Outbox::~Outbox() {
    setTimer(0);
}

void Outbox::flush() {
    const Busy busy(*this);
    write();
}

/// Runs between any two instructions of the caller: only what is safe then.
void Outbox::tick(int) {
    Outbox& outbox = *current;
    if (outbox.busy_)
        return;
    const int error = errno;
    outbox.write();
    errno = error;
}

void Outbox::write() {
    if (!writeAll(descriptor_, pending_))
        ::_exit(1); // nobody listens any more
    pending_.clear();
}

} // namespace quillmere
