#pragma once

#include "platform/Executors.h"
#include "platform/common/ThreadPool.h"

#include <gio/gio.h>

#include <deque>
#include <mutex>
#include <thread>

namespace quillmere::platform::gtk {

/// The main thread behind GLib's default main context, at default priority. Made on the main thread.
class MainLoopExecutor final : public MainExecutor {
public:
    MainLoopExecutor();
    ~MainLoopExecutor() override;
    MainLoopExecutor(const MainLoopExecutor&) = delete;
    MainLoopExecutor& operator=(const MainLoopExecutor&) = delete;

    bool isCurrent() const noexcept override;
    void post(Task task) override;
    bool runSync(const Task& task) override;

    /// The loop has ended: drops what is queued, refuses what comes and releases everybody who waits. Main thread.
    void close();

private:
    struct Queue;
    bool enqueue(Task task);
    void runQueued();

    const std::thread::id mainThread_ = std::this_thread::get_id();
    std::unique_ptr<Queue> queue_;
    GSource* source_ = nullptr;
};

/// The executors of the desktop: the main loop and the shared pools.
class DesktopExecutors final : public Executors {
public:
    MainLoopExecutor& main() override { return main_; }
    Executor& userInitiated() override { return userInitiated_; }
    Executor& utility() override { return utility_; }
    std::unique_ptr<Executor> makeSerial(std::string label) override;

private:
    MainLoopExecutor main_;
    ThreadPool userInitiated_{{.name = "user-initiated"}};
    ThreadPool utility_{{.name = "utility", .niceness = 5}};
};

} // namespace quillmere::platform::gtk
