#pragma once

namespace quillmere {

/// Lets the system, when it runs out of memory, end this process before all others. To be called before `lockDown`.
void beFirstToGo();

/// Gives up, for all threads of this process and for good, everything that waiting for an archive's descriptor and
/// reading from it do not need: opening files, the network, other programs and processes, executable memory, more than
/// a gigabyte of memory. What is refused fails with EPERM. False when the system cannot do this; then nothing may be
/// read.
[[nodiscard]] bool lockDown();

} // namespace quillmere
