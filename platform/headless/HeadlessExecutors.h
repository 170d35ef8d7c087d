#pragma once

#include "platform/Executors.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

namespace quillmere::platform {

/// A main loop that its owner pumps. The thread that makes it is the main thread.
class HeadlessMain : public MainExecutor {
public:
    bool isCurrent() const noexcept override { return std::this_thread::get_id() == thread_; }
    void post(Task task) override;
    bool runSync(const Task& task) override;

    /// Runs what has been posted, and what that posts, until nothing is left.
    void runPending();
    /// Pumps until `done` holds; false when that has not come within a generous time.
    bool runUntil(const std::function<bool()>& done);
    /// Ends the loop: waiting threads are let go, later tasks are dropped.
    void end();

private:
    bool runOne();

    const std::thread::id thread_ = std::this_thread::get_id();
    std::mutex lock_;
    std::condition_variable changed_;
    std::deque<Task> tasks_;
    bool ended_ = false;
};

/// A real background pool beside a pumped main loop. Destruction ends the loop and waits for the tasks that still run.
class HeadlessExecutors : public Executors {
public:
    HeadlessExecutors();
    ~HeadlessExecutors() override;

    HeadlessMain& main() override { return main_; }
    Executor& userInitiated() override;
    Executor& utility() override;
    std::unique_ptr<Executor> makeSerial(std::string label) override;

    /// Whether no background task is waiting or running.
    bool isIdle() const;

private:
    class Pool;
    HeadlessMain main_;
    std::unique_ptr<Pool> pool_;
};

} // namespace quillmere::platform
