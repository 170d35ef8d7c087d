#pragma once

#include "base/FileDescriptor.h"

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace quillmere::platform::gtk {

/// One media source's way to its file: asked for once, then kept until `forget`. The media framework starts and stops a
/// source several times, also from streaming threads while the main thread tears the pipeline down and waits for them;
/// so only `wait` ever waits, never on the main thread, and a restart finds the answer that the first start got. Any
/// thread.
class MediaFile : public std::enable_shared_from_this<MediaFile> {
public:
    enum class Outcome { ready, refused, interrupted };
    struct Result {
        Outcome outcome = Outcome::interrupted;
        int descriptor = -1; // valid until `forget`, which comes after every streaming thread has left
    };

    void setAddress(std::optional<std::string> address);
    std::optional<std::string> address() const;

    /// Asks for the file unless that was done. False when there is no address.
    bool start();
    /// Ends every wait until the next start.
    void stop();
    /// While flushing no call waits.
    enum class Flow { running, flushing };
    void setFlow(Flow flow);
    /// Drops the answer, or the question that is still open.
    void forget();

    /// The file, as soon as the answer is there.
    Result wait();
    /// Its size if the answer is there.
    std::optional<uint64_t> sizeNow() const;
    /// True once for each refusal, for the one error that is reported.
    bool takeRefusal();

private:
    enum class State { idle, asked, ready, refused };

    void ask(uint64_t question);
    void settle(uint64_t question, FileDescriptor file);

    mutable std::mutex lock_;
    std::condition_variable changed_;
    std::optional<std::string> address_;
    State state_ = State::idle;
    FileDescriptor file_;
    uint64_t question_ = 0;
    bool started_ = false;
    bool flushing_ = false;
    bool refusalTaken_ = false;
};

} // namespace quillmere::platform::gtk
