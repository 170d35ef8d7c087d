#include "platform/gtk/desktop/DesktopWorkspace.h"

#include "platform/common/AtomicFile.h"
#include "platform/gtk/desktop/DesktopRegistration.h"
#include "platform/gtk/desktop/MimeAppsList.h"
#include "platform/gtk/desktop/SingleInstance.h"
#include "platform/gtk/glib/GObjectRef.h"

#include <cerrno>
#include <fstream>
#include <gio/gdesktopappinfo.h>
#include <gtk/gtk.h>
#include <iterator>
#include <set>

namespace quillmere::platform::gtk {

namespace {

constexpr const char* unknownType = "application/octet-stream";
constexpr const char* folderType = "inode/directory";

std::string entryName() {
    return std::string(applicationId) + ".desktop";
}

std::string take(GError* error, const char* otherwise) {
    const GlibError owned(error);
    return owned ? owned->message : otherwise;
}

GObjectRef<GFile> fileOf(const FileUrl& url) {
    return GObjectRef<GFile>::adopt(g_file_new_for_path(url.path().c_str()));
}

/// What the user has said about a program that is gone.
void forgetChoices() {
    const FileUrl list(std::string(g_get_user_config_dir()) + "/mimeapps.list");
    try {
        std::ifstream in(list.filesystemPath(), std::ios::binary);
        const std::string before(std::istreambuf_iterator<char>(in), {});
        if (const auto after = withoutApplication(before, entryName()); after != before)
            replaceFile(list.resolvingSymlinks(), after);
    } catch (const std::exception&) {
        return; // an application that is missing is passed over
    }
}

/// For the desktop to know that what opens now is the user's wish.
std::string launchToken(GFile* file) {
    GdkDisplay* display = gdk_display_get_default();
    if (!display)
        return {};
    const auto context =
        GObjectRef<GAppLaunchContext>::adopt(G_APP_LAUNCH_CONTEXT(gdk_display_get_app_launch_context(display)));
    GList files{.data = file, .next = nullptr, .prev = nullptr};
    const auto manager = GObjectRef<GAppInfo>::adopt(g_app_info_get_default_for_type(folderType, FALSE));
    const GlibText token(manager ? g_app_launch_context_get_startup_notify_id(context.get(), manager.get(), &files)
                                 : nullptr);
    return token ? token.get() : "";
}

void openFolderOf(GFile* file) {
    const auto folder = GObjectRef<GFile>::adopt(g_file_get_parent(file));
    const GlibText uri(g_file_get_uri(folder ? folder.get() : file));
    g_app_info_launch_default_for_uri_async(uri.get(), nullptr, nullptr, nullptr, nullptr);
}

} // namespace

std::vector<std::string> documentMimeTypes(const Bundle& bundle, const ContentTypes& types) {
    std::set<std::string> found{folderType};
    const auto list = bundle.propertyList();
    const auto* documents = list ? list->if_contains("CFBundleDocumentTypes") : nullptr;
    if (!documents || !documents->is_array())
        return {};
    for (const auto& document : documents->get_array()) {
        const auto* extensions =
            document.is_object() ? document.get_object().if_contains("CFBundleTypeExtensions") : nullptr;
        if (!extensions || !extensions->is_array())
            continue;
        for (const auto& extension : extensions->get_array())
            if (extension.is_string())
                if (auto type = types.mimeType(std::string(extension.get_string())); type && *type != unknownType)
                    found.insert(std::move(*type));
    }
    return {found.begin(), found.end()};
}

int DesktopWorkspace::registerApplication(const FileUrl& bundle) {
    return dataFolder_ ? DesktopRegistration(*dataFolder_).add(bundle, documentMimeTypes(bundle_, types_)) : ENOENT;
}

std::optional<std::string> DesktopWorkspace::setDefaultApplication(const FileUrl& bundle, const std::string& type) {
    if (!dataFolder_)
        return "There is no folder for the user's applications.";
    // Its launch has registered it, unless that has failed or another copy has come since.
    if (DesktopRegistration(*dataFolder_).bundle() != bundle)
        registerApplication(bundle);
    const std::string entry = dataFolder_->appending("applications/" + entryName()).path();
    const auto application = GObjectRef<GDesktopAppInfo>::adopt(g_desktop_app_info_new_from_filename(entry.c_str()));
    if (!application)
        return "The desktop does not know this copy of Quillmere.";
    GError* error = nullptr;
    if (!g_app_info_set_as_default_for_type(G_APP_INFO(application.get()), type.c_str(), &error))
        return take(error, "The desktop did not take the change.");
    return std::nullopt;
}

std::optional<FileUrl> DesktopWorkspace::applicationFor(const std::string& type) {
    const auto application = GObjectRef<GAppInfo>::adopt(g_app_info_get_default_for_type(type.c_str(), FALSE));
    const char* name = application ? g_app_info_get_executable(application.get()) : nullptr;
    if (!name)
        return std::nullopt;
    const GlibText path(g_find_program_in_path(name));
    if (!path)
        return std::nullopt;
    const FileUrl program(path.get());
    return bundleOfProgram(program).value_or(program);
}

Recycled DesktopWorkspace::recycle(const std::vector<FileUrl>& files) {
    Recycled recycled;
    for (const auto& file : files) {
        GError* error = nullptr;
        if (!g_file_trash(fileOf(file).get(), nullptr, &error)) {
            recycled.error = take(error, "The Trash did not take it.");
            continue;
        }
        recycled.moved.insert(file);
        if (!dataFolder_ || DesktopRegistration(*dataFolder_).bundle() != file)
            continue;
        DesktopRegistration(*dataFolder_).remove(file);
        forgetChoices();
    }
    return recycled;
}

void DesktopWorkspace::reveal(const FileUrl& file) {
    const auto shown = fileOf(file);
    const auto bus = GObjectRef<GDBusConnection>::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    if (!bus)
        return openFolderOf(shown.get());
    const GlibText uri(g_file_get_uri(shown.get()));
    const char* const uris[] = {uri.get(), nullptr};
    const auto answered = +[](GObject* source, GAsyncResult* result, gpointer data) {
        const auto asked = GObjectRef<GFile>::adopt(G_FILE(data));
        const GlibVariant answer(g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr));
        if (!answer)
            openFolderOf(asked.get());
    };
    g_dbus_connection_call(bus.get(), "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                           "org.freedesktop.FileManager1", "ShowItems",
                           g_variant_new("(^ass)", uris, launchToken(shown.get()).c_str()), nullptr,
                           G_DBUS_CALL_FLAGS_NONE, -1, nullptr, answered, g_object_ref(shown.get()));
}

} // namespace quillmere::platform::gtk
