// Whatever a page asks for: the range that is understood lies inside the file.

#include "base/Errors.h"
#include "files/ByteRange.h"
#include "fuzz/Require.h"

#include <cstdint>
#include <cstring>

using namespace quillmere;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    uint64_t fileSize = 0;
    if (size < sizeof fileSize)
        return 0;
    std::memcpy(&fileSize, data, sizeof fileSize);
    try {
        const auto range = byteRange(fuzz::textOf(data + sizeof fileSize, size - sizeof fileSize), fileSize);
        require(range.start <= fileSize && range.length <= fileSize - range.start);
        require(!range.partial || range.length > 0);
    } catch (const FileFailure& error) {
        require(!userMessage(error).empty());
    }
    return 0;
}
