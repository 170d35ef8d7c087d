#pragma once

#include "base/Fatal.h"
#include "platform/Executors.h"

namespace quillmere::platform {

/// Stops the process when an operation of the main thread is called on another one.
inline void assertMainThread(const MainExecutor& main) {
    if (!main.isCurrent())
        fatalStop("an operation of the main thread was called on another one");
}

} // namespace quillmere::platform
