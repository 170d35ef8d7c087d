#include "platform/gtk/desktop/ProcessSetup.h"

#include "platform/gtk/glib/GObjectRef.h"
#include "platform/gtk/reads/ReadProtocol.h"

#include <glib.h>
#include <string>

namespace quillmere::platform::gtk {

namespace {

/// The media framework keeps a list of its plug-ins in this folder. The engine lets its confined processes have the
/// folder only when it is already there; otherwise all plug-ins would be looked at anew in every run.
void keepPluginRegistry() {
    const GlibText folder(g_build_filename(g_get_user_cache_dir(), "gstreamer-1.0", nullptr));
    constexpr int ownerOnly = 0700;
    g_mkdir_with_parents(folder.get(), ownerOnly); // without it media still play
}

} // namespace

void prepareProcess() {
    constexpr const char* name = "WEBKIT_GST_ALLOWED_URI_PROTOCOLS";
    const char* already = g_getenv(name);
    const std::string schemes = already && *already ? std::string(already) + "," + reads::scheme : reads::scheme;
    g_setenv(name, schemes.c_str(), TRUE);
    keepPluginRegistry();
}

} // namespace quillmere::platform::gtk
