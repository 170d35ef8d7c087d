#pragma once

namespace quillmere::platform::gtk {

/// Lets media elements load the private scheme. The web processes inherit it by way of this process's environment, so
/// it is called first in `main`, before any thread.
void prepareMediaEnvironment();

} // namespace quillmere::platform::gtk
