#include "platform/gtk/MediaEnvironment.h"

#include "platform/gtk/MediaProtocol.h"

#include <glib.h>
#include <string>

namespace quillmere::platform::gtk {

void prepareMediaEnvironment() {
    constexpr const char* name = "WEBKIT_GST_ALLOWED_URI_PROTOCOLS";
    const char* already = g_getenv(name);
    const std::string schemes = already && *already ? std::string(already) + "," + media::scheme : media::scheme;
    g_setenv(name, schemes.c_str(), TRUE);
}

} // namespace quillmere::platform::gtk
