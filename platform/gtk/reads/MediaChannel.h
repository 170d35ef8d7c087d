#pragma once

#include "base/FileDescriptor.h"
#include "base/RegularFile.h"
#include "platform/Executors.h"

#include <memory>

namespace quillmere::platform::gtk {

/// The program's end of a conversation with one media source: the source asks for pipes at offsets of its file, on a
/// socket of their own. It lasts until the source hangs up or says what it must not. Main thread only.
class MediaChannel : public std::enable_shared_from_this<MediaChannel> {
public:
    /// How far a pipe may run ahead of the source.
    static constexpr size_t capacity = size_t{256} * 1024;
    /// Pipes that a source may have at once, those included that it has just let go. The next one waits for room.
    static constexpr long mostPipes = 64;

    /// Opens the conversation, which keeps itself alive while it lasts; the source's end of it. Throws
    /// std::system_error when there is no socket. The executors outlive it.
    static FileDescriptor open(std::shared_ptr<const RegularFile> file, Executors& executors);

private:
    MediaChannel(FileDescriptor socket, std::shared_ptr<const RegularFile> file, Executors& executors);
    void watch();
    void watchLater();
    bool receive();
    void answer(uint64_t number, uint64_t offset);

    const std::shared_ptr<const FileDescriptor> socket_; // shared with the workers that answer
    const std::shared_ptr<const RegularFile> file_;      // shared with what is poured
    Executors& executors_;
};

} // namespace quillmere::platform::gtk
