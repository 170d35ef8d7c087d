#pragma once

#include <cstdint>

namespace quillmere {

/// Tells whether two handles mean the same file, whatever its name became meanwhile.
struct FileIdentity {
    uint64_t device = 0;
    uint64_t file = 0;
    bool operator==(const FileIdentity&) const = default;
};

} // namespace quillmere
