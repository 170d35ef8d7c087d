#pragma once

#include "base/FileDescriptor.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

namespace quillmere::platform::gtk {

/// Reads a file at any offset by pipes that the program fills. Demuxers read several places in turn (sound here, film
/// there), each onwards; so a few pipes stay open, and a new one is asked for only where none is near. Any thread.
class FilePipes {
public:
    static constexpr size_t mostPipes = 4;
    /// Bytes that are read and dropped rather than asked past.
    static constexpr uint64_t longestSkip = uint64_t{256} * 1024;

    /// `channel` is the socket for the questions.
    FilePipes(FileDescriptor channel, uint64_t size) : channel_(std::move(channel)), size_(size) {}

    /// As the program last told it.
    uint64_t size() const noexcept { return size_; }

    enum class Outcome { read, interrupted, failed };
    struct Result {
        Outcome outcome = Outcome::failed;
        size_t count = 0; // fewer than wanted only at the end of the file
    };
    /// Fills the buffer from the offset on. Waits for the program, but no longer than until `interruption`, a
    /// descriptor, becomes readable.
    Result read(uint64_t offset, std::span<std::byte> buffer, int interruption);

private:
    struct Pipe {
        FileDescriptor end;
        uint64_t position = 0;
        uint64_t lastUse = 0;
    };
    enum class Wait { ready, interrupted };

    Pipe* nearest(uint64_t offset);
    Outcome ask(uint64_t offset, int interruption, Pipe*& pipe);
    static Outcome skip(Pipe& pipe, uint64_t offset, int interruption);
    static Result take(Pipe& pipe, std::span<std::byte> buffer, int interruption);
    static Wait await(int descriptor, int interruption);
    void close(const Pipe& pipe);

    std::mutex lock_; // guards all but the size
    const FileDescriptor channel_;
    std::vector<Pipe> pipes_;
    uint64_t uses_ = 0;
    uint64_t questions_ = 0;
    std::atomic<uint64_t> size_;
};

} // namespace quillmere::platform::gtk
