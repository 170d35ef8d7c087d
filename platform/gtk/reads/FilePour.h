#pragma once

#include "base/RegularFile.h"
#include "platform/Executors.h"

#include <cstdint>
#include <memory>

namespace quillmere::platform::gtk {

/// Pours a range of a file into a pipe whose read end somebody else holds, without a copy where the file system can.
/// Made and run on a worker; it holds one only while the reader reads, and else watches the pipe on the main loop. It
/// keeps itself alive until the range, the file or the reader has come to its end.
class FilePour : public std::enable_shared_from_this<FilePour> {
public:
    struct Range {
        uint64_t offset = 0;
        uint64_t length = 0;
    };

    /// `capacity` is how far it may run ahead of the reader; the system may grant less. Throws std::system_error when
    /// no pipe can be had. The executors outlive it.
    static std::shared_ptr<FilePour> make(std::shared_ptr<const RegularFile> file, Range range, size_t capacity,
                                          Executors& executors);

    /// Once, before `run`. Reading from it never waits.
    FileDescriptor takeReadEnd() noexcept { return std::move(read_); }
    /// Worker only; returns when there is nothing to do for now.
    void run();

private:
    enum class Step { moved, full, over };

    FilePour(std::shared_ptr<const RegularFile> file, Range range, Executors& executors);
    void open(size_t capacity);
    Step splice() noexcept;
    Step copy();
    Step after(ssize_t moved) noexcept;
    void awaitRoom();

    const std::shared_ptr<const RegularFile> file_;
    Range range_;
    Executors& executors_;
    FileDescriptor read_;
    FileDescriptor write_;
    bool canSplice_ = true;
};

} // namespace quillmere::platform::gtk
