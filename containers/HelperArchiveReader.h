#pragma once

#include "base/FileUrl.h"
#include "containers/ArchiveHelpers.h"
#include "containers/ArchiveProtocol.h"
#include "containers/ArchiveReader.h"

#include <chrono>
#include <memory>

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

    HelperArchiveReader(std::shared_ptr<ArchiveHelpers> helpers, std::chrono::milliseconds silence,
                        ArchiveRequest request);
    ~HelperArchiveReader() override;

    Outcome next(EntryFacts& facts) override;
    Outcome skip() override;
    std::optional<size_t> read(std::span<char> buffer) override;
    std::optional<std::string> errorText() const override { return errorText_; }

    /// The readers of one factory share their helpers.
    static ArchiveReaderFactory factory(const Helper& helper);

private:
    /// The next message but signs of life, valid until the next call; null once the helper is lost.
    const archiveProtocol::Message* receive();
    /// Waits for bytes and takes them in; false when none will come.
    bool takeBytes();
    Outcome expect(archiveProtocol::Kind kind, EntryFacts* facts);

    void dismiss() noexcept;

    std::shared_ptr<ArchiveHelpers> helpers_;
    std::chrono::milliseconds silence_;
    Pulse pulse_;
    std::optional<ArchiveHelper> helper_;
    archiveProtocol::Parser parser_;
    archiveProtocol::Message message_;
    std::string incoming_;
    std::string_view data_; ///< received, not yet read
    std::optional<std::string> errorText_;
    bool over_ = false; ///< nothing more will be taken from the helper
    bool entryComplete_ = false;
};

} // namespace quillmere
