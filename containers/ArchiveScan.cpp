#include "containers/ArchiveScan.h"

#include "base/Errors.h"
#include "containers/ContainerLimits.h"
#include "containers/ContainerMessages.h"
#include "containers/EntryPath.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace quillmere {

namespace {

/// Collects the nodes of one archive and keeps account of what it would expand to.
class Tree {
public:
    Tree(Session& session, int64_t archiveBytes)
        : session_(session), budget_(limits::expansionFactor * std::max(archiveBytes, limits::expansionFloor)) {
        session_.nodes.reserve(limits::nodes);
    }

    void add(const EntryFacts& facts, std::string_view path, int64_t ordinal) {
        const auto [place, isNew] = session_.nodes.try_emplace(key(path));
        Node& node = place->second;
        if (node.ordinal)
            throw ContainerError(messages::duplicatePaths);
        const bool isDirectory = facts.type == S_IFDIR;
        const bool isKnown = facts.size && *facts.size >= 0;
        const int64_t size = isKnown ? *facts.size : -1;
        if (!isDirectory && !isKnown && !isRawFormat(facts))
            throw ContainerError(messages::unknownSize);
        if (!isDirectory && size >= 1)
            account(size);
        // A folder that an earlier entry implied gets its own entry now.
        if (!isNew && !isDirectory)
            throw ContainerError(messages::conflictingPaths);
        node = {.path = place->first,
                .directory = isDirectory,
                .size = size,
                .modified = static_cast<double>(facts.modified) * 1000,
                .blocked = blockedReason(facts, size),
                .ordinal = ordinal};
        implyParents(node.path);
        if (session_.nodes.size() > limits::nodes)
            throw ContainerError(messages::tooManyFolders);
    }

    void finish() const {
        if (total_ > budget_)
            throw ContainerError(messages::expansionRatio);
    }

private:
    std::pmr::string key(std::string_view path) const { return std::pmr::string(path, session_.nodes.get_allocator()); }

    void account(int64_t size) {
        if (size > limits::expandedBytes - total_)
            throw ContainerError(messages::expandsTooFar);
        total_ += size;
        finish();
    }

    static const char* blockedReason(const EntryFacts& facts, int64_t size) {
        if (facts.encrypted)
            return messages::blockedEncrypted;
        if (facts.symbolicLink || facts.hardLink)
            return messages::blockedArchiveLink;
        if (facts.type != S_IFREG && facts.type != S_IFDIR)
            return messages::blockedArchiveSpecial;
        return size > limits::entryBytes ? messages::blockedTooLarge : nullptr;
    }

    void implyParents(std::string_view path) {
        const auto nearest = parentOfPath(path);
        if (nearest == knownFolder_)
            return; // as for most entries, which follow their neighbours
        for (auto parent = nearest; !parent.empty(); parent = parentOfPath(parent)) {
            const auto [place, isNew] = session_.nodes.try_emplace(key(parent));
            Node& folder = place->second;
            if (!isNew && !folder.directory)
                throw ContainerError(messages::crossesFilePath);
            if (!isNew)
                break; // its own parents are there already
            folder = {.path = place->first, .directory = true};
        }
        knownFolder_ = nearest;
    }

    Session& session_;
    const int64_t budget_;
    int64_t total_ = 0;
    std::string knownFolder_; ///< a folder with all its parents
};

} // namespace

RawFormat rawFormatOf(const FileUrl& archive) {
    constexpr std::array<std::string_view, 5> compressed{"gz", "gzip", "bz2", "bzip2", "xz"};
    return std::ranges::find(compressed, archive.lowerExtension()) != compressed.end() ? RawFormat::accepted
                                                                                       : RawFormat::refused;
}

void scanArchive(Session& session, ArchiveSource source, const ArchiveWork& work) {
    if (source.size > limits::archiveBytes)
        throw ContainerError(messages::archiveTooLarge);
    const WorkWatch watch = work.watch();
    const auto reader = work.readers(
        {.file = std::move(source.file), .raw = rawFormatOf(session.source), .pulse = [&watch] { watch.check(); }});
    Tree tree(session, source.size);
    watch.throwIfCancelled();
    EntryFacts facts;
    for (int64_t ordinal = 1;; ++ordinal) {
        watch.throwIfLate();
        const auto outcome = reader->next(facts);
        if (outcome == ArchiveReader::Outcome::end)
            break;
        if (outcome != ArchiveReader::Outcome::done)
            throw archiveFailure(*reader);
        if (ordinal > limits::headers)
            throw ContainerError(messages::tooManyEntries);
        const std::string path = entryPath(facts, session.source);
        const bool isRoot = path.empty();
        if (!isRoot)
            tree.add(facts, path, ordinal);
        if (!isRoot && isRawFormat(facts))
            break; // it has exactly one entry
        if (reader->skip() != ArchiveReader::Outcome::done && !isRoot)
            throw archiveFailure(*reader);
        watch.throwIfCancelled();
    }
    tree.finish();
}

} // namespace quillmere
