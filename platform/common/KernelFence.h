#pragma once

#include "base/FileDescriptor.h"
#include "base/FileUrl.h"

#include <linux/filter.h>
#include <memory>
#include <optional>
#include <vector>

namespace quillmere::platform {

/// What a program gives up before it starts, for itself and for all that it starts: system calls by a seccomp filter,
/// paths by a Landlock rule set.
struct KernelFence {
    std::shared_ptr<const std::vector<sock_filter>> calls;
    std::shared_ptr<const FileDescriptor> paths; // none where the kernel has no such rules
};

struct FencePaths {
    std::vector<FileUrl> readable; // files, or folders with all that is in them; what is missing is passed over
    std::optional<FileUrl> writable;
};

/// For programs without a wall: no network, no services of the user's session, no look into other processes, and of the
/// files only what is given. Throws std::system_error when the filter cannot be made. Any thread.
KernelFence makeKernelFence(const FencePaths& paths);

/// Puts the calling thread behind the fence, for good; whether that worked. Allocates nothing: for between the birth of
/// a process and its program.
bool enter(const KernelFence& fence) noexcept;

} // namespace quillmere::platform
