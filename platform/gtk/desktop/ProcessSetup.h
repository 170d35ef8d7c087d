#pragma once

namespace quillmere::platform::gtk {

/// Everything that this process has to set about itself before it is more than one thread: the environment, which the
/// web processes inherit and which may not change under a thread that reads it, signals and limits. First in `main`.
void prepareProcess();

} // namespace quillmere::platform::gtk
