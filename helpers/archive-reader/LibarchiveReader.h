#pragma once

#include "containers/ArchiveReader.h"

#include <clocale>
#include <memory>
#include <vector>

struct archive;
struct archive_entry;

namespace quillmere {

/// Reads with libarchive in this process. A single call may take very long, much memory or start a filter program, so
/// hostile archives are only read this way inside the confined reader program, in tests and in fuzzing.
class LibarchiveReader : public ArchiveReader {
public:
    explicit LibarchiveReader(ArchiveRequest request);
    ~LibarchiveReader() override;

    Outcome next(EntryFacts& facts) override;
    Outcome skip() override;
    std::optional<size_t> read(std::span<char> buffer) override;
    std::optional<std::string> errorText() const override;

    static ArchiveReaderFactory factory();

private:
    struct Source;
    struct ArchiveCloser {
        void operator()(archive* handle) const;
    };

    enum class State { fresh, reading, broken };

    Outcome step();
    Outcome passOver();

    ArchiveRequest request_;
    locale_t locale_;
    std::unique_ptr<Source> source_;
    std::unique_ptr<archive, ArchiveCloser> archive_;
    archive_entry* entry_ = nullptr;
    State state_ = State::fresh;
};

} // namespace quillmere
