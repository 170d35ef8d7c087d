#include "platform/gtk/desktop/RecentFiles.h"

#include "platform/gtk/glib/GObjectRef.h"

#include <gtk/gtk.h>

namespace quillmere::platform::gtk {

bool isWorthRemembering(const FileUrl& file, const FileUrl& caches) {
    return !file.path().starts_with(caches.path() + "/");
}

void noteRecentFile(const FileUrl& file, const std::string& application) {
    const FileUrl caches(std::string(g_get_user_cache_dir()) + "/Quillmere");
    if (!isWorthRemembering(file, caches))
        return;
    std::string program = FileUrl("/proc/self/exe").resolvingSymlinks().path();
    const GlibText quoted(g_shell_quote(program.c_str()));
    std::string command = std::string(quoted.get()) + " %u", name = application;
    const GlibText guessed(g_content_type_guess(file.path().c_str(), nullptr, 0, nullptr));
    const bool isFolder = g_file_test(file.path().c_str(), G_FILE_TEST_IS_DIR);
    std::string type = isFolder || !guessed ? "inode/directory" : guessed.get();
    GtkRecentData data{.display_name = nullptr,
                       .description = nullptr,
                       .mime_type = type.data(),
                       .app_name = name.data(),
                       .app_exec = command.data(),
                       .groups = nullptr,
                       .is_private = FALSE};
    gtk_recent_manager_add_full(gtk_recent_manager_get_default(), file.uri().c_str(), &data);
}

} // namespace quillmere::platform::gtk
