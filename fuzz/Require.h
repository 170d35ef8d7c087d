#pragma once

#include <cstdlib>
#include <string_view>

namespace quillmere::fuzz {

/// A broken promise ends the run, so that the fuzzer keeps the input.
inline void require(bool holds) {
    if (!holds)
        std::abort();
}

inline std::string_view textOf(const unsigned char* data, size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

} // namespace quillmere::fuzz
