#pragma once

#include "base/FileUrl.h"
#include "containers/ArchiveProtocol.h"
#include "containers/ArchiveReader.h"
#include "platform/common/ChildProcess.h"

#include <chrono>

namespace quillmere {

/// Reads through the confined helper program, so that a call that never returns, takes all memory or crashes harms
/// nothing here. Waiting asks the request's pulse every 20 ms; the helper is killed when that throws and when this
/// object goes. A helper that ends early, breaks the protocol or falls silent counts as a failure without words.
class HelperArchiveReader : public ArchiveReader {
public:
    struct Helper {
        FileUrl program;
        /// A helper that works says so every second; past this one is taken for lost.
        std::chrono::milliseconds silence{10'000};
    };

    HelperArchiveReader(const Helper& helper, ArchiveRequest request);

    Outcome next(EntryFacts& facts) override;
    Outcome skip() override;
    std::optional<size_t> read(std::span<char> buffer) override;
    std::optional<std::string> errorText() const override { return errorText_; }

    static ArchiveReaderFactory factory(Helper helper);

private:
    /// The next message but signs of life; nothing once the helper is lost.
    std::optional<archiveProtocol::Message> receive();
    /// Waits for bytes and takes them in; false when none will come.
    bool takeBytes();
    Outcome expect(archiveProtocol::Kind kind, EntryFacts* facts);

    std::chrono::milliseconds silence_;
    Pulse pulse_;
    FileDescriptor pipe_;
    std::optional<platform::ChildProcess> process_;
    archiveProtocol::Parser parser_;
    std::string incoming_;
    std::string_view data_; ///< received, not yet read
    std::optional<std::string> errorText_;
    bool over_ = false; ///< nothing more will be taken from the helper
    bool entryComplete_ = false;
};

} // namespace quillmere
