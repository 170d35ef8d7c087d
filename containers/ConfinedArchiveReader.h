#pragma once

#include "base/FileUrl.h"
#include "containers/ArchiveProtocol.h"
#include "containers/ArchiveReader.h"
#include "containers/ReaderProcesses.h"

#include <memory>

namespace quillmere {

/// Reads through the confined reader program, so that a call that never returns, takes all memory or crashes harms
/// nothing here. Waiting asks the request's pulse, which limits the time; the process is killed when that throws and
/// when this object goes. One that ends early or breaks the protocol counts as a failure without words.
class ConfinedArchiveReader : public ArchiveReader {
public:
    ConfinedArchiveReader(std::shared_ptr<ReaderProcesses> processes, const ArchiveRequest& request);
    ~ConfinedArchiveReader() override;

    Outcome next(EntryFacts& facts) override;
    Outcome skip() override;
    std::optional<size_t> read(std::span<char> buffer) override;
    std::optional<std::string> errorText() const override { return errorText_; }

    /// The readers of one factory share their processes.
    static ArchiveReaderFactory factory(const FileUrl& program);

private:
    /// The next message, valid until the next call; null once the process is lost.
    const archiveProtocol::Message* receive();
    /// Waits for bytes and takes them in; false when none will come.
    bool takeBytes();
    Outcome expect(archiveProtocol::Kind kind, EntryFacts* facts);

    void dismiss() noexcept;

    std::shared_ptr<ReaderProcesses> processes_;
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
