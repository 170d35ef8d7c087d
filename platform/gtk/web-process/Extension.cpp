#include "platform/gtk/web-process/MediaSource.h"
#include "platform/gtk/web-process/ShellLink.h"

// Called by the web process when it has loaded this object.
extern "C" G_MODULE_EXPORT void webkit_web_process_extension_initialize(WebKitWebProcessExtension* extension) {
    using namespace quillmere::platform::gtk;
    shell::connectTo(extension);
    if (registerMediaSource())
        shell::reportReady();
}
