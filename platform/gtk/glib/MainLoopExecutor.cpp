#include "platform/gtk/glib/MainLoopExecutor.h"

#include "platform/gtk/glib/Signals.h"

#include <condition_variable>
#include <exception>

namespace quillmere::platform::gtk {

struct MainLoopExecutor::Queue {
    std::mutex lock;
    std::deque<Task> tasks;
    bool closed = false;
};

namespace {

/// A caller that waits for its task. Released by the task's end or, when the task is dropped unrun, by its destruction.
class Rendezvous {
public:
    void finish(bool ran, std::exception_ptr failure) {
        {
            const std::lock_guard guard(lock_);
            done_ = true;
            ran_ = ran;
            failure_ = std::move(failure);
        }
        changed_.notify_one();
    }
    bool wait() {
        std::unique_lock guard(lock_);
        changed_.wait(guard, [this] { return done_; });
        if (failure_)
            std::rethrow_exception(failure_);
        return ran_;
    }

private:
    std::mutex lock_;
    std::condition_variable changed_;
    bool done_ = false;
    bool ran_ = false;
    std::exception_ptr failure_;
};

/// Held by the queued task alone, so that dropping the task releases the caller.
class Release {
public:
    explicit Release(std::shared_ptr<Rendezvous> meeting) : meeting_(std::move(meeting)) {}
    Release(const Release&) = delete;
    Release& operator=(const Release&) = delete;
    ~Release() {
        if (!finished_)
            meeting_->finish(false, nullptr);
    }
    void run(const Task& task) {
        std::exception_ptr failure;
        try {
            task();
        } catch (...) {
            failure = std::current_exception();
        }
        finished_ = true;
        meeting_->finish(true, std::move(failure));
    }

private:
    std::shared_ptr<Rendezvous> meeting_;
    bool finished_ = false;
};

} // namespace

MainLoopExecutor::MainLoopExecutor() : queue_(std::make_unique<Queue>()) {
    static GSourceFuncs functions{nullptr,
                                  nullptr,
                                  +[](GSource* source, GSourceFunc, gpointer data) -> gboolean {
                                      g_source_set_ready_time(source, -1);
                                      static_cast<MainLoopExecutor*>(data)->runQueued();
                                      return G_SOURCE_CONTINUE;
                                  },
                                  nullptr,
                                  nullptr,
                                  nullptr};
    source_ = g_source_new(&functions, sizeof(GSource));
    g_source_set_static_name(source_, "Quillmere main executor");
    g_source_set_can_recurse(source_, TRUE); // a task may run a loop of its own
    g_source_set_callback(source_, nullptr, this, nullptr);
    g_source_attach(source_, nullptr);
}

MainLoopExecutor::~MainLoopExecutor() {
    close();
    g_source_destroy(source_);
    g_source_unref(source_);
}

bool MainLoopExecutor::isCurrent() const noexcept {
    return std::this_thread::get_id() == mainThread_;
}

bool MainLoopExecutor::enqueue(Task task) {
    const std::lock_guard guard(queue_->lock);
    if (queue_->closed)
        return false;
    queue_->tasks.push_back(std::move(task));
    if (queue_->tasks.size() == 1)
        g_source_set_ready_time(source_, 0);
    return true;
}

void MainLoopExecutor::post(Task task) {
    enqueue(std::move(task));
}

bool MainLoopExecutor::runSync(const Task& task) {
    if (isCurrent()) {
        task();
        return true;
    }
    const auto meeting = std::make_shared<Rendezvous>();
    // The caller waits below, so the reference to its task holds.
    const auto enqueued = enqueue([release = std::make_shared<Release>(meeting), &task] { release->run(task); });
    return enqueued && meeting->wait();
}

void MainLoopExecutor::runQueued() {
    size_t turns = 0;
    {
        const std::lock_guard guard(queue_->lock);
        turns = queue_->tasks.size(); // what is posted from now on waits for the next turn
    }
    for (; turns > 0; --turns) {
        Task task;
        {
            const std::lock_guard guard(queue_->lock);
            if (queue_->tasks.empty())
                return;
            task = std::move(queue_->tasks.front());
            queue_->tasks.pop_front();
            if (!queue_->tasks.empty())
                g_source_set_ready_time(source_, 0); // also for a loop that the task runs
        }
        guarded(task);
    }
}

void MainLoopExecutor::close() {
    std::deque<Task> dropped;
    const std::lock_guard guard(queue_->lock);
    queue_->closed = true;
    dropped.swap(queue_->tasks);
}

std::unique_ptr<Executor> DesktopExecutors::makeSerial(std::string) {
    return userInitiated_.makeSerial();
}

} // namespace quillmere::platform::gtk
