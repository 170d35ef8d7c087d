#pragma once

#include "platform/Executors.h"

#include <chrono>
#include <memory>
#include <string>

namespace quillmere::platform {

/// A concurrent executor whose threads come on demand and retire when idle, so that blocked tasks never hold up others.
/// Tasks beyond `maximumWorkers` wait for a free thread. A task, with all that it captured, is destroyed on its worker
/// as soon as it has run. Any thread may submit.
///
/// The destructor drops tasks that have not started and never waits for one that runs: such a task finishes on a thread
/// of its own, or ends with the process.
class ThreadPool final : public Executor {
public:
    struct Options {
        std::string name; // of the threads, as the debugger shows it
        size_t maximumWorkers = 512;
        std::chrono::milliseconds idleTime{10'000};
        int niceness = 0; // added to the threads' scheduling niceness
    };

    explicit ThreadPool(Options options);
    ~ThreadPool() override;
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    /// Throws std::system_error when not a single thread can be started.
    void submit(Task task) override;

    /// A queue on this pool's threads: one task at a time, in order of submission. Destroying it drops tasks that have
    /// not started. It may outlive the pool, and then runs nothing.
    std::unique_ptr<Executor> makeSerial();

    /// Threads alive now, busy or idle.
    size_t workerCount() const;

private:
    class Core;
    std::shared_ptr<Core> core_;
};

} // namespace quillmere::platform
