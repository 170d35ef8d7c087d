#pragma once

namespace quillmere::platform::gtk {

/// Gives the page's main frame, and nothing else, the function by which it reads ranges of granted files at the speed
/// of memory. Main thread, before the first page.
void offerPageReads();

} // namespace quillmere::platform::gtk
