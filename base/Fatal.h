#pragma once

#include <cstdio>
#include <cstdlib>

namespace quillmere {

/// Stops the process for something that cannot happen in an installed application.
[[noreturn]] inline void fatalStop(const char* reason) {
    std::fprintf(stderr, "Fatal error: %s\n", reason);
    std::abort();
}

} // namespace quillmere
