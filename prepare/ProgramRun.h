#pragma once

#include "base/Clock.h"
#include "platform/common/ChildProcess.h"
#include "platform/common/TemporaryFolder.h"

#include <chrono>
#include <memory>

namespace quillmere {

inline constexpr const char* converterFailure = "The file converter could not open this document.";

/// Runs a program to its end; returns when its exit status is 0. Throws FileFailure when it fails or is still running
/// after `limit`, and the launch error when it cannot be started. A program past its limit is asked to end and killed
/// soon after; this call does not wait for that, but `work` stays until the program is gone.
void runProgram(const platform::ProcessSpec& program, std::chrono::seconds limit, const SteadyClock& clock,
                std::shared_ptr<const platform::TemporaryFolder> work);

} // namespace quillmere
