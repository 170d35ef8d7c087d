#pragma once

#include "containers/ArchiveScan.h"
#include "containers/PreviewCache.h"
#include "containers/Session.h"

namespace quillmere {

/// Opens the archive of a session and makes sure that it is still the one that was scanned.
ArchiveSource openUnchanged(const Session& session);

/// Throws unless the archive still has the session's fingerprint.
void requireUnchanged(const Session& session);

/// Writes one entry of an archive session into the cache, unless an earlier copy can still be read, and returns its
/// file. The entry is recognised again by position and path and is held to what the scan allowed. Throws
/// ContainerError, failures of the file system and CancellationError; nothing is left behind then.
FileUrl extractEntry(Session& session, const Node& node, const PreviewCache& cache, const ArchiveWork& work);

} // namespace quillmere
