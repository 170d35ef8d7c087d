#include "helpers/web-process/MediaFile.h"

#include "helpers/web-process/ShellLink.h"

#include <sys/stat.h>

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
    shell::askForFile(address, [weak = weak_from_this(), question](FileDescriptor file) {
        if (const auto self = weak.lock())
            self->settle(question, std::move(file));
    });
}

void MediaFile::settle(uint64_t question, FileDescriptor file) {
    const std::lock_guard hold(lock_);
    if (question != question_ || state_ != State::asked)
        return;
    state_ = file ? State::ready : State::refused;
    file_ = std::move(file);
    changed_.notify_all();
}

void MediaFile::stop() {
    const std::lock_guard hold(lock_);
    started_ = false;
    changed_.notify_all();
}

void MediaFile::setFlow(Flow flow) {
    const std::lock_guard hold(lock_);
    flushing_ = flow == Flow::flushing;
    changed_.notify_all();
}

void MediaFile::forget() {
    const std::lock_guard hold(lock_);
    ++question_;
    state_ = State::idle;
    refusalTaken_ = false;
    file_.reset();
    changed_.notify_all();
}

MediaFile::Result MediaFile::wait() {
    std::unique_lock hold(lock_);
    const bool mayWait = !onMainThread();
    changed_.wait(hold, [&] { return state_ != State::asked || !started_ || flushing_ || !mayWait; });
    switch (state_) {
    case State::ready:
        return {Outcome::ready, file_.get()};
    case State::refused:
        return {Outcome::refused};
    case State::idle:
    case State::asked:
        break;
    }
    return {Outcome::interrupted};
}

std::optional<uint64_t> MediaFile::sizeNow() const {
    const std::lock_guard hold(lock_);
    struct stat status{};
    if (state_ != State::ready || ::fstat(file_.get(), &status) != 0)
        return std::nullopt;
    return static_cast<uint64_t>(status.st_size);
}

bool MediaFile::takeRefusal() {
    const std::lock_guard hold(lock_);
    return state_ == State::refused && !std::exchange(refusalTaken_, true);
}

} // namespace quillmere::platform::gtk
