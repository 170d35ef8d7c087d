#pragma once

#include "platform/Executors.h"

#include <cstdio>
#include <cstdlib>

namespace quillmere::platform {

/// Stops the process when an operation of the main thread is called on another one.
inline void assertMainThread(const MainExecutor& main) {
    if (main.isCurrent())
        return;
    std::fputs("called off the main thread\n", stderr);
    std::abort();
}

} // namespace quillmere::platform
