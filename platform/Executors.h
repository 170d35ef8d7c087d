#pragma once

#include <functional>
#include <memory>
#include <string>

namespace quillmere::platform {

using Task = std::function<void()>;

/// The main thread: all state, all views, all bridge traffic. All operations may be called from any thread.
class MainExecutor {
public:
    virtual ~MainExecutor() = default;
    virtual bool isCurrent() const noexcept = 0;
    /// Runs the task on a later turn of the main loop, in order of posting.
    virtual void post(Task task) = 0;
    /// Runs the task on the main thread and waits for it; at once when called there. False, with the task not run, once
    /// the main loop has ended.
    virtual bool runSync(const Task& task) = 0;
};

/// A queue of background work. Tasks must not throw.
class Executor {
public:
    virtual ~Executor() = default;
    virtual void submit(Task task) = 0;
};

/// Where code runs. The two concurrent pools grow on demand: a task that blocks for minutes never holds up another.
class Executors {
public:
    virtual ~Executors() = default;
    virtual MainExecutor& main() = 0;
    virtual Executor& userInitiated() = 0;
    virtual Executor& utility() = 0;
    /// A queue of its own, one task at a time in order of submission.
    virtual std::unique_ptr<Executor> makeSerial(std::string label) = 0;
};

} // namespace quillmere::platform
