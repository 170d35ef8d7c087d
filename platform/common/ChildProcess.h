#pragma once

#include "base/Clock.h"
#include "base/FileDescriptor.h"
#include "base/FileUrl.h"
#include "platform/common/KernelFence.h"

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace quillmere::platform {

/// Ceilings of one child; what is absent is inherited. A child past one of them gets an error or is killed by the
/// kernel.
struct ResourceLimits {
    std::optional<std::uint64_t> addressSpace{}; // bytes, of each process
    std::optional<std::uint64_t> cpuSeconds{};   // of each process, all its threads together
    std::optional<std::uint64_t> fileSize{};     // bytes, of each file written
    std::optional<std::uint64_t> openFiles{};
    std::optional<std::uint64_t> processes{}; // processes and threads beyond those that the user runs already
};

/// A descriptor of ours under the number that the child knows it by. Borrowed until the child has started.
struct PassedDescriptor {
    int ours = -1;
    int theirs = -1;
};

/// How a child is started: no shell, the arguments exactly as given. Standard streams and further descriptors come from
/// `descriptors`; a standard stream that is not among them is the null device. Nothing else is inherited.
struct ProcessSpec {
    FileUrl executable;
    std::vector<std::string> arguments{};                  // without the program's own name
    std::optional<std::vector<std::string>> environment{}; // "NAME=value"; absent: inherited
    std::vector<PassedDescriptor> descriptors{};
    ResourceLimits limits{};
    int niceness = 0;
    std::optional<KernelFence> fence{};
};

struct ExitStatus {
    int code = 0;   // when it ended by itself
    int signal = 0; // when a signal ended it, else 0
    bool isSuccess() const noexcept { return code == 0 && signal == 0; }
};

/// A running program. It leads a session of its own, so signals reach whatever it has started too, and once it has
/// ended the rest of its group is killed. Nothing outlives this object, nor (see ProcessRegistry) the program. Movable;
/// one thread at a time.
class ChildProcess {
public:
    /// Starts the program; returns once it runs. Throws std::filesystem::filesystem_error, with the executable's path,
    /// when it cannot be started, and std::system_error when the system refuses a new process.
    explicit ChildProcess(const ProcessSpec& spec);
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    /// Kills what still runs and waits for its end.
    ~ChildProcess();

    bool isRunning();
    /// Waits for the end, at most until the deadline; whether it has ended.
    bool waitUntil(SteadyTime deadline);
    /// Waits for the end.
    ExitStatus wait();
    /// Nothing while it runs.
    std::optional<ExitStatus> exitStatus();

    /// Asks the whole group to end (SIGTERM); returns at once.
    void terminate() noexcept;
    /// Kills the whole group; returns at once.
    void kill() noexcept;

    /// The leader's process id; stays valid until the end has been seen.
    pid_t identifier() const noexcept { return process_; }

private:
    void signalGroup(int signalNumber) const noexcept;
    bool reap(int waitOptions) noexcept;
    void end() noexcept;

    pid_t process_ = -1;
    FileDescriptor handle_; // becomes readable at the end; absent where the system has none
    std::optional<ExitStatus> status_;
};

/// Both ends of a new pipe, neither inherited by children unless passed on.
struct Pipe {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};
Pipe makePipe();

} // namespace quillmere::platform
