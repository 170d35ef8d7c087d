#pragma once

#include "containers/ArchiveWork.h"
#include "containers/Session.h"

#include <cstdint>

namespace quillmere {

/// What a scan or an extraction reads from.
struct ArchiveSource {
    FileDescriptor file; ///< the archive, as it was checked
    int64_t size = 0;    ///< bytes
};

/// Reads every header of the archive once and fills the session's tree of nodes, within all limits. Throws
/// ContainerError for whatever is not safe to browse, and CancellationError; the session is then of no use.
void scanArchive(Session& session, ArchiveSource source, const ArchiveWork& work);

/// Whether the session's source may be a single compressed file.
RawFormat rawFormatOf(const FileUrl& archive);

} // namespace quillmere
