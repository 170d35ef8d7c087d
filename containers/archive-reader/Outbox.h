#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace quillmere {

/// Sends frames down a pipe from a thread of its own: many small ones in one write, what is there within milliseconds
/// even while the caller is deep inside a long call, and a sign of life every second. A caller that is ahead of the
/// other side waits.
class Outbox {
public:
    explicit Outbox(int descriptor);
    /// Sends what is left.
    ~Outbox();
    Outbox(const Outbox&) = delete;
    Outbox& operator=(const Outbox&) = delete;

    /// `append` adds a frame to the text it is given.
    template <typename Append>
    void send(Append append) {
        std::unique_lock hold(mutex_);
        room_.wait(hold, [this] { return pending_.size() < mostBytes; });
        const bool wasEmpty = pending_.empty();
        const bool wasUrgent = isUrgent();
        append(pending_);
        if (wasEmpty || isUrgent() != wasUrgent)
            work_.notify_one();
    }

private:
    static constexpr size_t urgentBytes = 65'536;
    static constexpr size_t mostBytes = 4 * urgentBytes;

    bool isUrgent() const { return closed_ || pending_.size() >= urgentBytes; }
    void run();
    void write(const std::string& bytes) const;

    int descriptor_;
    std::mutex mutex_;
    std::condition_variable work_;
    std::condition_variable room_;
    std::string pending_;
    bool closed_ = false;
    std::thread thread_;
};

} // namespace quillmere
