#pragma once

#include "base/Clock.h"
#include "platform/common/Confinement.h"
#include "prepare/Converter.h"

#include <chrono>
#include <string>
#include <vector>

namespace quillmere {

/// One run of an external converter.
struct ProgramRun {
    std::vector<FileUrl> programs; // the first that can be started does it
    std::vector<std::string> arguments;
    FileUrl original; // may be read
    WorkFolder work;  // may be written, and stays until the program is gone
    platform::UserFonts fonts = platform::UserFonts::hidden;
};

/// Runs external converters, confined and within their limit of time.
class ProgramRunner {
public:
    static constexpr std::chrono::seconds timeLimit{180};

    /// `confinement` outlives the runner.
    ProgramRunner(const platform::Confinement& confinement, SteadyClock clock);

    /// Returns when the program has ended with status 0. Throws FileFailure when it fails or is still running at the
    /// limit, and the launch error when none can be started. A program past its limit is asked to end and killed soon
    /// after; this call does not wait for that.
    void run(const ProgramRun& run) const;

    bool hasWall() const { return confinement_.hasWall(); }
    SteadyTime now() const { return clock_(); }

private:
    platform::ExitStatus runOne(const FileUrl& program, const ProgramRun& run) const;

    const platform::Confinement& confinement_;
    SteadyClock clock_;
};

/// The candidates that are executable files, in their order; a star in a path stands for any name, the newest version
/// first. Looked for anew each time.
std::vector<FileUrl> executables(const std::vector<FileUrl>& candidates);

} // namespace quillmere
