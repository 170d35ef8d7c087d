#pragma once

#include "base/FileUrl.h"
#include "containers/ArchiveProtocol.h"
#include "containers/ArchiveReader.h"
#include "containers/ReaderProcesses.h"

#include <chrono>
#include <memory>

namespace quillmere {

/// Reads through the confined reader program, so that a call that never returns, takes all memory or crashes harms
/// nothing here. Waiting asks the request's pulse every 20 ms; its process is killed when that throws and when this
/// object goes. One that ends early, breaks the protocol or falls silent counts as a failure without words.
class ConfinedArchiveReader : public ArchiveReader {
public:
    struct Options {
        FileUrl program;
        /// One that works says so every second; past this one is taken for lost.
        std::chrono::milliseconds silence{10'000};
    };

    ConfinedArchiveReader(std::shared_ptr<ReaderProcesses> processes, std::chrono::milliseconds silence,
                          ArchiveRequest request);
    ~ConfinedArchiveReader() override;

    Outcome next(EntryFacts& facts) override;
    Outcome skip() override;
    std::optional<size_t> read(std::span<char> buffer) override;
    std::optional<std::string> errorText() const override { return errorText_; }

    /// The readers of one factory share their processes.
    static ArchiveReaderFactory factory(const Options& options);

private:
    /// The next message but signs of life, valid until the next call; null once the process is lost.
    const archiveProtocol::Message* receive();
    /// Waits for bytes and takes them in; false when none will come.
    bool takeBytes();
    Outcome expect(archiveProtocol::Kind kind, EntryFacts* facts);

    void dismiss() noexcept;

    std::shared_ptr<ReaderProcesses> processes_;
    std::chrono::milliseconds silence_;
    Pulse pulse_;
    std::optional<ReaderProcess> process_;
    archiveProtocol::Parser parser_;
    archiveProtocol::Message message_;
    std::string incoming_;
    std::string_view data_; ///< received, not yet read
    std::optional<std::string> errorText_;
    bool over_ = false; ///< nothing more will be taken from the process
    bool entryComplete_ = false;
};

} // namespace quillmere
