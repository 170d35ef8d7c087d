#pragma once

#include "helpers/web-process/FilePipes.h"

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>

namespace quillmere::platform::gtk {

/// One media source's way to its file: asked for once, then kept until `forget`. The media framework starts and stops a
/// source several times, also from streaming threads while the main thread tears the pipeline down and waits for them;
/// so only the first answer comes by way of the main thread, only `await` and `read` ever wait, and a restart finds the
/// answer that the first start got. Any thread.
class MediaFile : public std::enable_shared_from_this<MediaFile> {
public:
    enum class Outcome { ready, refused, failed, interrupted };
    struct Result {
        Outcome outcome = Outcome::interrupted;
        size_t count = 0; // fewer than wanted only at the end of the file
    };

    MediaFile();

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

    /// Whether the file can be read, as soon as the answer is there. Does not wait on the main thread.
    Outcome await();
    Result read(uint64_t offset, std::span<std::byte> buffer);
    /// Its size if the answer is there.
    std::optional<uint64_t> sizeNow() const;
    /// True once for each refusal, for the one error that is reported.
    bool takeRefusal();

private:
    enum class State { idle, asked, ready, refused };

    void ask(uint64_t question);
    void settle(uint64_t question, FileDescriptor channel, uint64_t size);
    void changed();

    mutable std::mutex lock_;
    std::condition_variable changed_;
    FileDescriptor interruption_; // readable while nothing may wait
    std::optional<std::string> address_;
    State state_ = State::idle;
    std::shared_ptr<FilePipes> pipes_;
    uint64_t question_ = 0;
    bool started_ = false;
    bool flushing_ = false;
    bool refusalTaken_ = false;
};

} // namespace quillmere::platform::gtk
