#include "platform/gtk/desktop/ProcessSetup.h"

#include "platform/gtk/reads/ReadProtocol.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <glib.h>
#include <string>
#include <sys/resource.h>

namespace quillmere::platform::gtk {

namespace {

bool hasGraphicsDevice() {
    std::error_code ignored;
    for (const auto& device : std::filesystem::directory_iterator("/dev/dri", ignored))
        if (device.path().filename().string().starts_with("renderD"))
            return true;
    return false;
}

/// Without a graphics device toolkit and engine would imitate one in software, which is many times slower than drawing
/// without any. Only the blur behind floating controls is lost.
void chooseRenderer() {
    if (hasGraphicsDevice())
        return;
    g_setenv("GSK_RENDERER", "cairo", FALSE);
    g_setenv("WEBKIT_DISABLE_COMPOSITING_MODE", "1", FALSE);
}

void allowMediaScheme() {
    constexpr const char* name = "WEBKIT_GST_ALLOWED_URI_PROTOCOLS";
    const char* already = g_getenv(name);
    const std::string schemes = already && *already ? std::string(already) + "," + reads::scheme : reads::scheme;
    g_setenv(name, schemes.c_str(), TRUE);
}

/// The media framework keeps a list of its plug-ins, the graphics library compiled shaders. The engine lets its
/// confined processes have these folders only when they are already there; otherwise every run would begin from
/// nothing.
void keepEngineCaches() {
    const std::filesystem::path caches(g_get_user_cache_dir());
    constexpr int ownerOnly = 0700;
    for (const char* name : {"gstreamer-1.0", "mesa_shader_cache"})
        g_mkdir_with_parents((caches / name).c_str(), ownerOnly); // without them it is only slower
}

/// A page with many pipes and answers under way needs more than the usual thousand.
void raiseOpenFiles() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == limit.rlim_max)
        return;
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

} // namespace

void prepareProcess() {
    std::signal(SIGPIPE, SIG_IGN); // a reader that has gone is an error, not an end
    raiseOpenFiles();
    chooseRenderer();
    allowMediaScheme();
    keepEngineCaches();
}

} // namespace quillmere::platform::gtk
