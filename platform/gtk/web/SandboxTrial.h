#pragma once

#include "platform/common/ChildProcess.h"

#include <optional>
#include <string>

namespace quillmere::platform::gtk {

/// Finds out, beside the rest of the start, whether the engine will be able to close its processes in. Where it cannot,
/// it aborts the program without a word; it is never let run without its sandbox.
class SandboxTrial {
public:
    /// Begins the trial.
    SandboxTrial();

    /// The sentence that names cause and remedy, when the engine would fail. Waits for the trial; once.
    std::optional<std::string> failure();

private:
    std::optional<std::string> failure_;
    std::optional<ChildProcess> trial_;
};

} // namespace quillmere::platform::gtk
