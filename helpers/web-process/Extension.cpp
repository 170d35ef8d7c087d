#include "helpers/web-process/MediaSource.h"
#include "helpers/web-process/PageReads.h"
#include "helpers/web-process/ShellLink.h"

#include <system_error>
#include <thread>

// Called by the web process when it has loaded this object. The media framework takes tens of milliseconds to start,
// and seconds when it has to look at all its plug-ins first; the page does not wait for that. A media element does: its
// own start of the framework waits for ours.
extern "C" G_MODULE_EXPORT void webkit_web_process_extension_initialize(WebKitWebProcessExtension* extension) {
    using namespace quillmere::platform::gtk;
    shell::connectTo(extension);
    offerPageReads();
    try {
        std::thread([] {
            if (!registerMediaSource())
                g_warning("Media cannot be played: the media framework could not be started.");
        }).detach();
    } catch (const std::system_error&) {
        g_warning("Media cannot be played: no thread could be started.");
    }
}
