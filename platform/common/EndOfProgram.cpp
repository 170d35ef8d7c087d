#include "platform/common/EndOfProgram.h"

#include "platform/common/ProcessRegistry.h"
#include "platform/common/TemporaryFolder.h"

#include <cstdio>
#include <unistd.h>

namespace quillmere::platform {

void endProgram(int status) noexcept {
    ProcessRegistry::endAll();
    TemporaryFolder::removeAll();
    std::fflush(nullptr);
    ::_exit(status);
}

} // namespace quillmere::platform
