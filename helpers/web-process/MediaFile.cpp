#include "helpers/web-process/MediaFile.h"

#include "helpers/web-process/ShellLink.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace quillmere::platform::gtk {

namespace {

bool onMainThread() {
    return g_main_context_is_owner(g_main_context_default()) != FALSE;
}

void runOnMainThread(std::function<void()> action) {
    const auto run = +[](gpointer data) -> gboolean {
        (*static_cast<std::function<void()>*>(data))();
        return G_SOURCE_REMOVE;
    };
    const auto forget = +[](gpointer data) { delete static_cast<std::function<void()>*>(data); };
    g_idle_add_full(G_PRIORITY_DEFAULT, run, new std::function<void()>(std::move(action)), forget);
}

} // namespace

MediaFile::MediaFile() : interruption_(::eventfd(1, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void MediaFile::setAddress(std::optional<std::string> address) {
    {
        const std::lock_guard hold(lock_);
        address_ = std::move(address);
    }
    forget();
}

std::optional<std::string> MediaFile::address() const {
    const std::lock_guard hold(lock_);
    return address_;
}

bool MediaFile::start() {
    const std::lock_guard hold(lock_);
    if (!address_)
        return false;
    started_ = true;
    changed();
    if (state_ == State::idle) {
        state_ = State::asked;
        // Posted even on the main thread: the caller may hold locks of the pipeline.
        runOnMainThread([weak = weak_from_this(), question = ++question_] {
            if (const auto self = weak.lock())
                self->ask(question);
        });
    }
    return true;
}

void MediaFile::ask(uint64_t question) {
    std::string address;
    {
        const std::lock_guard hold(lock_);
        if (question != question_ || state_ != State::asked || !address_)
            return;
        address = *address_;
    }
    shell::askForChannel(address, [weak = weak_from_this(), question](FileDescriptor channel, uint64_t size) {
        if (const auto self = weak.lock())
            self->settle(question, std::move(channel), size);
    });
}

void MediaFile::settle(uint64_t question, FileDescriptor channel, uint64_t size) {
    const std::lock_guard hold(lock_);
    if (question != question_ || state_ != State::asked)
        return;
    state_ = channel ? State::ready : State::refused;
    if (channel)
        pipes_ = std::make_shared<FilePipes>(std::move(channel), size);
    changed_.notify_all();
}

/// Whoever waits looks again. With the lock held.
void MediaFile::changed() {
    eventfd_t count = 0;
    if (!started_ || flushing_)
        ::eventfd_write(interruption_.get(), 1);
    else
        ::eventfd_read(interruption_.get(), &count);
    changed_.notify_all();
}

void MediaFile::stop() {
    const std::lock_guard hold(lock_);
    started_ = false;
    changed();
}

void MediaFile::setFlow(Flow flow) {
    const std::lock_guard hold(lock_);
    flushing_ = flow == Flow::flushing;
    changed();
}

void MediaFile::forget() {
    const std::lock_guard hold(lock_);
    ++question_;
    state_ = State::idle;
    refusalTaken_ = false;
    pipes_.reset();
    changed_.notify_all();
}

MediaFile::Outcome MediaFile::await() {
    std::unique_lock hold(lock_);
    const bool mayWait = !onMainThread();
    changed_.wait(hold, [&] { return state_ != State::asked || !started_ || flushing_ || !mayWait; });
    switch (state_) {
    case State::ready:
        return Outcome::ready;
    case State::refused:
        return Outcome::refused;
    case State::idle:
    case State::asked:
        break;
    }
    return Outcome::interrupted;
}

MediaFile::Result MediaFile::read(uint64_t offset, std::span<std::byte> buffer) {
    const auto outcome = await();
    std::shared_ptr<FilePipes> pipes;
    {
        const std::lock_guard hold(lock_);
        pipes = pipes_;
    }
    if (outcome != Outcome::ready || !pipes)
        return {.outcome = outcome == Outcome::ready ? Outcome::interrupted : outcome};
    const auto result = pipes->read(offset, buffer, interruption_.get());
    switch (result.outcome) {
    case FilePipes::Outcome::read:
        return {.outcome = Outcome::ready, .count = result.count};
    case FilePipes::Outcome::interrupted:
        return {.outcome = Outcome::interrupted};
    case FilePipes::Outcome::failed:
        break;
    }
    return {.outcome = Outcome::failed};
}

std::optional<uint64_t> MediaFile::sizeNow() const {
    const std::lock_guard hold(lock_);
    return pipes_ ? std::optional(pipes_->size()) : std::nullopt;
}

bool MediaFile::takeRefusal() {
    const std::lock_guard hold(lock_);
    return state_ == State::refused && !std::exchange(refusalTaken_, true);
}

} // namespace quillmere::platform::gtk
