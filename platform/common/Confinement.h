#pragma once

#include "platform/common/ChildProcess.h"

#include <mutex>
#include <optional>
#include <vector>

namespace quillmere::platform {

/// What a confined program may touch beside the system's programs and libraries. Files and folders keep their paths.
struct ConfinedAccess {
    std::vector<FileUrl> readable{};   // files, or folders with all that is in them
    std::optional<FileUrl> writable{}; // one folder, which exists
};

/// Runs programs that touch untrusted bytes inside bubblewrap: no network, processes of their own, a private temporary
/// folder and home, the system and the input read-only, one writable folder. Where bubblewrap is missing or refused by
/// the system, programs run without it: the resource limits and the minimal environment hold in either case. See
/// docs/confinement.md. Any thread.
class Confinement {
public:
    enum class Mode { automatic, limitsOnly };

    explicit Confinement(Mode mode = Mode::automatic);

    /// Whether programs are walled in. Found out once, by a trial run that takes some 10 ms.
    bool isAvailable() const;

    /// The program as it is to be started: the same arguments, descriptors and limits, a minimal environment in place
    /// of the process's own, and the wall around it where there is one. Throws std::filesystem::filesystem_error when
    /// the program cannot be executed.
    ProcessSpec confine(ProcessSpec program, const ConfinedAccess& access) const;

private:
    Mode mode_;
    mutable std::once_flag probed_;
    mutable bool isAvailable_ = false;
};

} // namespace quillmere::platform
