#pragma once

#include "containers/ArchiveReader.h"
#include "containers/ContainerLimits.h"
#include "containers/WorkWatch.h"

namespace quillmere {

/// What reading an archive takes: who reads, who may stop it, and the time. Borrowed for one operation.
struct ArchiveWork {
    const ArchiveReaderFactory& readers;
    const CancellationTest& cancelled;
    const SteadyClock& clock;

    /// Of a reading that begins now.
    WorkWatch watch() const { return {cancelled, clock, clock() + limits::readingTime}; }
};

} // namespace quillmere
