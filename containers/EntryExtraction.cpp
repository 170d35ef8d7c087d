#include "containers/EntryExtraction.h"

#include "base/Errors.h"
#include "containers/ContainerLimits.h"
#include "containers/ContainerMessages.h"
#include "containers/EntryPath.h"
#include "containers/FileFacts.h"

#include <array>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmere {

namespace {

/// The header at the node's position must still be the plain file that was listed.
void requireSameEntry(const EntryFacts& facts, const Node& node, const FileUrl& archive) {
    const bool isPlainFile = facts.type == S_IFREG && !facts.symbolicLink && !facts.hardLink && !facts.encrypted;
    if (entryPath(facts, archive) != node.path || !isPlainFile || facts.size.value_or(0) > limits::entryBytes)
        throw ContainerError(messages::entryChanged);
}

void copyEntry(ArchiveReader& reader, const Node& node, PreviewCache::EntryFile& file, const WorkWatch& watch) {
    std::array<char, limits::blockBytes> buffer;
    int64_t written = 0;
    watch.throwIfCancelled();
    for (;;) {
        watch.throwIfLate();
        const auto count = reader.read(buffer);
        if (!count)
            throw archiveFailure(reader);
        if (*count == 0)
            break;
        written += static_cast<int64_t>(*count);
        if (written > limits::entryBytes || (node.size >= 0 && written > node.size))
            throw ContainerError(messages::entryTooLong);
        file.write({buffer.data(), *count});
        watch.throwIfCancelled();
    }
    if (node.size >= 0 && written != node.size)
        throw ContainerError(messages::entryTruncated);
}

} // namespace

void requireUnchanged(const Session& session) {
    if (fileFacts::fingerprint(fileFacts::statusOf(session.source)) != session.fingerprint)
        throw ContainerError(messages::archiveChanged);
}

ArchiveSource openUnchanged(const Session& session) {
    FileDescriptor file = openArchive(session.source);
    const auto status = fileFacts::statusOf(file, session.source);
    if (!S_ISREG(status.st_mode) || fileFacts::fingerprint(status) != session.fingerprint)
        throw ContainerError(messages::archiveChanged);
    return {.file = std::move(file), .size = status.st_size};
}

FileUrl extractEntry(Session& session, const Node& node, const PreviewCache& cache, const ArchiveWork& work) {
    requireUnchanged(session);
    const auto known = session.extracted.find(node.id);
    if (known != session.extracted.end() && ::access(known->second.path().c_str(), R_OK) == 0)
        return known->second;

    const WorkWatch watch = work.watch();
    const auto reader = work.readers({.file = openUnchanged(session).file,
                                      .raw = rawFormatOf(session.source),
                                      .only = node.ordinal,
                                      .pulse = [&watch] { watch.check(); }});
    watch.check();
    EntryFacts facts;
    switch (reader->next(facts)) {
    case ArchiveReader::Outcome::done:
        break;
    case ArchiveReader::Outcome::end:
        throw ContainerError(messages::entryGone);
    case ArchiveReader::Outcome::failed:
        throw archiveFailure(*reader);
    }
    requireSameEntry(facts, node, session.source);

    auto file = cache.createEntry(session.token, node.id, node.name());
    copyEntry(*reader, node, file, watch);
    watch.check();
    requireUnchanged(session);
    FileUrl kept = file.keep();
    session.extracted.insert_or_assign(node.id, kept);
    return kept;
}

} // namespace quillmere
