#pragma once

#include "platform/common/ChildProcess.h"
#include "platform/common/UserFolders.h"

#include <mutex>
#include <optional>
#include <vector>

namespace quillmere::platform {

enum class UserFonts { hidden, readable };

/// What a confined program may touch beside the system's programs and libraries. Files and folders keep their paths.
struct ConfinedAccess {
    std::vector<FileUrl> readable{};   // files, or folders with all that is in them
    std::optional<FileUrl> writable{}; // one folder, which exists
    UserFonts fonts = UserFonts::hidden;
};

/// Runs programs that touch untrusted bytes inside bubblewrap: no network, processes of their own, a private temporary
/// folder and home, the system and the input read-only, one writable folder. Where bubblewrap is missing or refused by
/// the system, programs run behind a fence of the kernel's instead, which is lower. See docs/confinement.md. Any
/// thread.
class Confinement {
public:
    enum class Mode { automatic, withoutWall };
    struct Options {
        Mode mode = Mode::automatic;
        FileUrl bubblewrap{"/usr/bin/bwrap"};
        std::chrono::milliseconds trialLimit{10'000};
        Directories user = userDirectories(); // whose fonts may be read
    };

    explicit Confinement(Options options);
    explicit Confinement(Mode mode = Mode::automatic) : Confinement(Options{.mode = mode}) {}

    /// Whether programs are walled in. A trial run of some 10 ms tells, until one has succeeded. A trial that does not
    /// end in time refuses nothing: then a program that cannot be walled in does not run.
    bool hasWall() const;

    /// The program as it is to be started: the same arguments, descriptors and limits, a minimal environment in place
    /// of the process's own, and the wall or the fence around it. Behind the wall a program that cannot be started ends
    /// with status 126 or 127. Throws std::filesystem::filesystem_error when the program cannot be executed.
    ProcessSpec confine(ProcessSpec program, const ConfinedAccess& access) const;

private:
    enum class Wall;
    enum class Trial { stands, refused, late };

    std::optional<Wall> wall() const;
    Trial tryWall(Wall wall) const noexcept;
    ProcessSpec fenced(ProcessSpec program, const ConfinedAccess& access) const;
    ProcessSpec walled(ProcessSpec program, const ConfinedAccess& access, Wall wall) const;

    Options options_;
    mutable std::mutex mutex_;
    mutable std::optional<Wall> standing_;
    mutable bool hasToldOfRefusal_ = false;
};

} // namespace quillmere::platform
