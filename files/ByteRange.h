#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quillmere {

/// The bytes that an answer carries. `partial` tells an answer to a range from one with the whole file, even where both
/// cover the same bytes.
struct ByteRange {
    uint64_t start = 0;
    uint64_t length = 0;
    bool partial = false;
    bool operator==(const ByteRange&) const = default;
};

/// Reads the value of a "Range" header, exactly as it came, for a file of `size` bytes. Takes one range of the "bytes"
/// unit in its three forms; throws FileFailure for everything else. Touches no file; any thread.
ByteRange byteRange(std::optional<std::string_view> header, uint64_t size);

} // namespace quillmere
