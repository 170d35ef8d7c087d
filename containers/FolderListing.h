#pragma once

#include "containers/Session.h"
#include "containers/WorkWatch.h"

#include <string>
#include <vector>

namespace quillmere {

/// Reads one folder of a folder session. The session then knows the entries of this folder and no others; an entry that
/// it knew before keeps its id. Returns them in the order of the file system; the pointers stay good until the session
/// lists again. Throws ContainerError, failures of the file system and CancellationError.
std::vector<const Node*> listFolder(Session& session, const std::string& path, const WorkWatch& watch);

} // namespace quillmere
