#pragma once

namespace quillmere::platform {

/// Ends the program at once, for when its window has closed: kills every child and removes every temporary folder.
/// Nothing is destroyed, since workers may still use it: they are not waited for.
[[noreturn]] void endProgram(int status) noexcept;

} // namespace quillmere::platform
