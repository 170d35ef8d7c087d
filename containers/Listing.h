#pragma once

#include "base/Json.h"
#include "containers/Session.h"

#include <string>
#include <vector>

namespace quillmere {

/// What the page shows of one folder of a session: the session's facts and one record per node, in the given order.
JsonObject listingRecord(const Session& session, const std::string& path, const std::vector<const Node*>& sorted);

} // namespace quillmere
