#include "platform/common/ThreadPool.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <pthread.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace quillmere::platform {

namespace {

/// Tasks promise not to throw; one that does must not take the window down with it.
void runAndDestroy(Task task) noexcept { // NOLINT(performance-unnecessary-value-param): it ends here
    try {
        task();
    } catch (...) {
    }
}

} // namespace

class ThreadPool::Core : public std::enable_shared_from_this<Core> {
public:
    explicit Core(Options options) : options_(std::move(options)) {}

    void submit(Task task) {
        std::unique_lock lock(mutex_);
        if (closed_) {
            lock.unlock(); // the task's captures are destroyed outside the lock
            return;
        }
        waiting_.push_back(std::move(task));
        if (idle_ >= waiting_.size()) {
            wake_.notify_one();
            return;
        }
        if (workers_ >= options_.maximumWorkers)
            return;
        ++workers_;
        try {
            std::thread([core = shared_from_this()] { core->work(); }).detach();
        } catch (...) {
            if (--workers_ > 0)
                return; // a busy worker takes the task when it is done
            Task refused = std::move(waiting_.back());
            waiting_.pop_back();
            lock.unlock();
            throw;
        }
    }

    void close() {
        std::deque<Task> dropped;
        std::unique_lock lock(mutex_);
        closed_ = true;
        dropped.swap(waiting_);
        wake_.notify_all();
        retired_.wait(lock, [this] { return idle_ == 0; });
        lock.unlock();
    }

    size_t workerCount() const {
        const std::lock_guard lock(mutex_);
        return workers_;
    }

private:
    void work() noexcept {
        ::pthread_setname_np(::pthread_self(), options_.name.substr(0, 15).c_str());
        if (options_.niceness != 0)
            ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), options_.niceness);
        std::unique_lock lock(mutex_);
        while (waitForTask(lock)) {
            Task task = std::move(waiting_.front());
            waiting_.pop_front();
            lock.unlock();
            runAndDestroy(std::move(task));
            lock.lock();
        }
        --workers_;
    }

    bool waitForTask(std::unique_lock<std::mutex>& lock) {
        ++idle_;
        const bool woken = wake_.wait_for(lock, options_.idleTime, [this] { return closed_ || !waiting_.empty(); });
        --idle_;
        if (closed_ && idle_ == 0)
            retired_.notify_all();
        return woken && !closed_;
    }

    const Options options_;
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable retired_;
    std::deque<Task> waiting_;
    size_t workers_ = 0;
    size_t idle_ = 0;
    bool closed_ = false;

    friend class ThreadPool;
    class Serial;
};

class ThreadPool::Core::Serial final : public Executor {
public:
    explicit Serial(std::shared_ptr<Core> core) : state_(std::make_shared<State>()) { state_->core = std::move(core); }

    ~Serial() override {
        std::deque<Task> dropped;
        const std::lock_guard lock(state_->mutex);
        state_->closed = true;
        dropped.swap(state_->waiting);
    }

    void submit(Task task) override {
        {
            const std::lock_guard lock(state_->mutex);
            state_->waiting.push_back(std::move(task));
            if (std::exchange(state_->running, true))
                return;
        }
        try {
            state_->core->submit([state = state_] { drain(*state); });
        } catch (...) {
            const std::lock_guard lock(state_->mutex);
            state_->running = false;
            throw;
        }
    }

private:
    struct State {
        std::shared_ptr<Core> core;
        std::mutex mutex;
        std::deque<Task> waiting;
        bool running = false;
        bool closed = false;
    };

    static void drain(State& state) {
        for (;;) {
            Task task;
            {
                const std::lock_guard lock(state.mutex);
                if (state.closed || state.waiting.empty()) {
                    state.running = false;
                    return;
                }
                task = std::move(state.waiting.front());
                state.waiting.pop_front();
            }
            runAndDestroy(std::move(task));
        }
    }

    std::shared_ptr<State> state_;
};

ThreadPool::ThreadPool(Options options) : core_(std::make_shared<Core>(std::move(options))) {}

ThreadPool::~ThreadPool() {
    core_->close();
}

void ThreadPool::submit(Task task) {
    core_->submit(std::move(task));
}

std::unique_ptr<Executor> ThreadPool::makeSerial() {
    return std::make_unique<Core::Serial>(core_);
}

size_t ThreadPool::workerCount() const {
    return core_->workerCount();
}

} // namespace quillmere::platform
