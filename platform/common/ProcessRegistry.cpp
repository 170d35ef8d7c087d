#include "platform/common/ProcessRegistry.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <exception>
#include <mutex>
#include <pthread.h>
#include <thread>
#include <utility>
#include <vector>

namespace quillmere::platform::ProcessRegistry {

namespace {

constexpr auto endPollInterval = std::chrono::milliseconds(20);

/// A fixed table of atomics, since a signal handler reads it.
std::array<std::atomic<pid_t>, 1024> groups;
std::atomic<bool> isEnding = false;
static_assert(std::atomic<pid_t>::is_always_lock_free);

struct Start {
    const std::function<void()>* action = nullptr;
    std::exception_ptr failure{};
    bool isDone = false;
};

struct Ending {
    ChildProcess child;
    SteadyTime killTime;
    std::function<void()> afterwards;
    bool isKilled = false;
};

/// The starting thread, which in between looks after children that were asked to end.
class Starter {
public:
    /// Never destroyed: its thread runs until the process ends.
    static Starter& shared() {
        static auto* const starter = new Starter;
        return *starter;
    }

    void run(const std::function<void()>& action) {
        Start start{.action = &action};
        std::unique_lock lock(mutex_);
        starts_.push_back(&start);
        wake_.notify_one();
        done_.wait(lock, [&] { return start.isDone; });
        lock.unlock();
        if (start.failure)
            std::rethrow_exception(start.failure);
    }

    void add(Ending ending) {
        const std::lock_guard lock(mutex_);
        endings_.push_back(std::move(ending));
        wake_.notify_one();
    }

    std::vector<Ending> takeEndings() {
        const std::lock_guard lock(mutex_);
        return std::exchange(endings_, {});
    }

private:
    Starter() {
        std::thread([this] { work(); }).detach();
    }

    void work() noexcept {
        ::pthread_setname_np(::pthread_self(), "children");
        std::unique_lock lock(mutex_);
        for (;;) {
            if (endings_.empty())
                wake_.wait(lock, [this] { return !starts_.empty() || !endings_.empty(); });
            else
                wake_.wait_for(lock, endPollInterval, [this] { return !starts_.empty(); });
            while (!starts_.empty())
                serve(lock);
            finishEndings(lock);
        }
    }

    void serve(std::unique_lock<std::mutex>& lock) {
        Start& start = *starts_.front();
        starts_.pop_front();
        lock.unlock();
        try {
            (*start.action)();
        } catch (...) {
            start.failure = std::current_exception();
        }
        lock.lock();
        start.isDone = true;
        done_.notify_all();
    }

    void finishEndings(std::unique_lock<std::mutex>& lock) {
        std::vector<std::function<void()>> finished;
        for (auto ending = endings_.begin(); ending != endings_.end();) {
            if (!ending->child.isRunning()) {
                finished.push_back(std::move(ending->afterwards));
                ending = endings_.erase(ending);
                continue;
            }
            if (!ending->isKilled && steadyNow() >= ending->killTime) {
                ending->child.kill();
                ending->isKilled = true;
            }
            ++ending;
        }
        if (finished.empty())
            return;
        // Removing a large folder must not hold up the next start.
        lock.unlock();
        try {
            std::thread([finished = std::move(finished)] { runAll(finished); }).detach();
        } catch (...) {
            // No thread to be had: what was left to do is housekeeping's then.
        }
        lock.lock();
    }

public:
    static void runAll(const std::vector<std::function<void()>>& actions) noexcept {
        for (const auto& action : actions) {
            try {
                if (action)
                    action();
            } catch (...) {
            }
        }
    }

private:
    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable done_;
    std::deque<Start*> starts_;
    std::vector<Ending> endings_;
};

void endByThisSignal(int number) {
    killAll();
    ::signal(number, SIG_DFL);
    ::raise(number);
}

} // namespace

void runOnStarter(const std::function<void()>& action) {
    Starter::shared().run(action);
}

bool add(pid_t group) noexcept {
    for (auto& slot : groups) {
        pid_t empty = 0;
        if (!slot.compare_exchange_strong(empty, group))
            continue;
        // Noted before this is asked, so that either we see the end or the end sees the group.
        if (!isEnding)
            return true;
        slot = 0;
        return false;
    }
    return false;
}

void remove(pid_t group) noexcept {
    for (auto& slot : groups) {
        pid_t found = group;
        if (slot.compare_exchange_strong(found, 0))
            return;
    }
}

void endSoon(ChildProcess child, std::chrono::milliseconds grace, std::function<void()> afterwards) {
    child.terminate();
    Starter::shared().add({std::move(child), steadyNow() + grace, std::move(afterwards)});
}

void killAll() noexcept {
    for (auto& slot : groups)
        if (const pid_t group = slot.load(); group > 0)
            ::kill(-group, SIGKILL);
}

void endAll() noexcept {
    isEnding = true;
    killAll();
    std::vector<std::function<void()>> actions;
    for (auto& ending : Starter::shared().takeEndings()) {
        ending.child.wait();
        actions.push_back(std::move(ending.afterwards));
    }
    Starter::runAll(actions);
}

void installEndOfProgram() {
    std::atexit([] { killAll(); });
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction current{};
        ::sigaction(number, nullptr, &current);
        if (current.sa_handler != SIG_DFL)
            continue;
        struct sigaction ours{};
        ours.sa_handler = endByThisSignal;
        ::sigaction(number, &ours, nullptr);
    }
}

} // namespace quillmere::platform::ProcessRegistry
