#pragma once

#include "platform/common/ChildProcess.h"

#include <functional>
#include <memory>
#include <sys/types.h>

namespace quillmere::platform {

/// Every child of the program, so that none survives it. Children are started on one thread that lives as long as the
/// program: the kernel's parent-death signal, on which the end by SIGKILL relies, follows the starting thread.
/// All operations may be called from any thread.
namespace ProcessRegistry {

/// Runs `action` on the starting thread and waits for it; rethrows what it throws.
void runOnStarter(const std::function<void()>& action);

/// Takes note of a process group, and forgets it. False when the table is full or the program ends.
bool add(pid_t group) noexcept;
void remove(pid_t group) noexcept;

/// Asks the child to end and returns at once; kills it after the grace. `afterwards` runs once it is gone, on a thread
/// of the registry, or in `endAll`.
void endSoon(ChildProcess child, std::chrono::milliseconds grace, std::function<void()> afterwards);

/// Kills every group. May be called in a signal handler.
void killAll() noexcept;

/// For the end of the program: kills every group, lets no other start, and runs what `endSoon` still has to run. Never
/// waits for a thread.
void endAll() noexcept;

/// Kills every group when the program ends by exit() or by SIGTERM, SIGINT or SIGHUP. Signals that have a handler, or
/// are ignored, keep their handling. Call once, early in main.
void installEndOfProgram();

} // namespace ProcessRegistry

} // namespace quillmere::platform
