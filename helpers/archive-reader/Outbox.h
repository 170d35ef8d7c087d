#pragma once

#include <atomic>
#include <csignal>
#include <string>

namespace quillmere {

/// Sends frames down a pipe: many small ones in one write, and all that is there a moment later even while the caller
/// is deep inside a long call. A timer's signal does the latter rather than a thread,
/// because libarchive's countless small allocations cost half as much again in a process with threads. A caller that is
/// ahead of the other side waits. One at a time, one thread.
class Outbox {
public:
    /// Takes SIGALRM and the process's real-time timer.
    explicit Outbox(int descriptor);
    ~Outbox();
    Outbox(const Outbox&) = delete;
    Outbox& operator=(const Outbox&) = delete;

    /// `append` adds a frame to the text it is given.
    template <typename Append>
    void send(Append append) {
        const Busy busy(*this);
        append(pending_);
        if (pending_.size() >= batchBytes)
            write();
    }
    /// Sends what is there.
    void flush();

private:
    static constexpr size_t batchBytes = 16'384;

    /// Keeps the signal away from frames in the making.
    class Busy {
    public:
        explicit Busy(Outbox& outbox) : outbox_(outbox) {
            outbox_.busy_ = 1;
            std::atomic_signal_fence(std::memory_order_seq_cst);
        }
        ~Busy() {
            std::atomic_signal_fence(std::memory_order_seq_cst);
            outbox_.busy_ = 0;
        }
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;

    private:
        Outbox& outbox_;
    };

    static void tick(int);
    void write();

    int descriptor_;
    std::string pending_;
    volatile std::sig_atomic_t busy_ = 0;
};

} // namespace quillmere
