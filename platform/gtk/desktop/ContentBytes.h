#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <optional>
#include <string>

namespace quillmere::platform::gtk {

/// Writes offered content out as this MIME type, whether it is offered so or as a value that can be written so. `done`
/// gets nothing when it cannot, at once or on a later turn of the main loop. Main thread only.
void readContent(GdkContentProvider* content, const char* mimeType,
                 std::function<void(std::optional<std::string>)> done);

} // namespace quillmere::platform::gtk
