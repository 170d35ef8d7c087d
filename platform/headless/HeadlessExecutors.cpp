#include "platform/headless/HeadlessExecutors.h"

#include "platform/common/ThreadPool.h"

#include <atomic>
#include <utility>

namespace quillmere::platform {

void HeadlessMain::post(Task task) {
    {
        const std::lock_guard guard(lock_);
        if (!ended_)
            tasks_.push_back(std::move(task));
    }
    changed_.notify_all();
}

bool HeadlessMain::runSync(const Task& task) {
    if (isCurrent()) {
        task();
        return true;
    }
    struct Turn {
        const Task* task;
        bool done = false;
    };
    const auto turn = std::make_shared<Turn>(Turn{.task = &task});
    std::unique_lock guard(lock_);
    if (ended_)
        return false;
    tasks_.emplace_back([this, turn] {
        (*turn->task)();
        const std::lock_guard inner(lock_);
        turn->done = true;
        changed_.notify_all();
    });
    changed_.notify_all();
    changed_.wait(guard, [&] { return turn->done || ended_; });
    return turn->done;
}

bool HeadlessMain::runOne() {
    Task task;
    {
        const std::lock_guard guard(lock_);
        if (tasks_.empty())
            return false;
        task = std::move(tasks_.front());
        tasks_.pop_front();
    }
    task();
    return true;
}

void HeadlessMain::runPending() {
    while (runOne()) {
    }
}

bool HeadlessMain::runUntil(const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!done()) {
        if (runOne())
            continue;
        std::unique_lock guard(lock_);
        // The short wait is for conditions that no posted task announces.
        changed_.wait_for(guard, std::chrono::milliseconds(5), [&] { return !tasks_.empty(); });
        if (tasks_.empty() && std::chrono::steady_clock::now() > deadline)
            return false;
    }
    return true;
}

void HeadlessMain::end() {
    std::deque<Task> dropped; // outlives the lock: what the tasks hold may post again
    {
        const std::lock_guard guard(lock_);
        ended_ = true;
        dropped.swap(tasks_);
    }
    changed_.notify_all();
}

namespace {

/// Passes tasks on and counts those that are not over.
class CountingExecutor : public Executor {
public:
    CountingExecutor(Executor& inner, std::shared_ptr<std::atomic<int>> count)
        : inner_(inner), count_(std::move(count)) {}

    void submit(Task task) override {
        ++*count_;
        // Captured first, so that it goes last: after everything that the task holds.
        std::shared_ptr<void> token(nullptr, [count = count_](void*) { --*count; });
        inner_.submit([token = std::move(token), task = std::move(task)] { task(); });
    }

private:
    Executor& inner_;
    std::shared_ptr<std::atomic<int>> count_;
};

class OwningExecutor : public Executor {
public:
    OwningExecutor(std::unique_ptr<Executor> queue, const std::shared_ptr<std::atomic<int>>& count)
        : queue_(std::move(queue)), counting_(*queue_, count) {}
    void submit(Task task) override { counting_.submit(std::move(task)); }

private:
    std::unique_ptr<Executor> queue_;
    CountingExecutor counting_;
};

} // namespace

class HeadlessExecutors::Pool : public Executor {
public:
    void submit(Task task) override { counting_.submit(std::move(task)); }
    std::unique_ptr<Executor> makeSerial() { return std::make_unique<OwningExecutor>(threads_.makeSerial(), count_); }
    bool isIdle() const { return *count_ == 0; }

private:
    ThreadPool threads_{{.name = "headless"}};
    std::shared_ptr<std::atomic<int>> count_ = std::make_shared<std::atomic<int>>(0);
    CountingExecutor counting_{threads_, count_};
};

HeadlessExecutors::HeadlessExecutors() : pool_(std::make_unique<Pool>()) {}

HeadlessExecutors::~HeadlessExecutors() {
    main_.end();
    while (!isIdle())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

Executor& HeadlessExecutors::userInitiated() {
    return *pool_;
}

Executor& HeadlessExecutors::utility() {
    return *pool_;
}

bool HeadlessExecutors::isIdle() const {
    return pool_->isIdle();
}

std::unique_ptr<Executor> HeadlessExecutors::makeSerial(std::string) {
    return pool_->makeSerial();
}

} // namespace quillmere::platform
