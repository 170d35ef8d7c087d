#include "platform/gtk/desktop/DesktopRegistration.h"

#include "base/Clock.h"
#include "base/Errors.h"
#include "platform/common/AtomicFile.h"
#include "platform/common/ChildProcess.h"
#include "platform/gtk/desktop/DesktopEntry.h"
#include "platform/gtk/desktop/MimeAppsList.h"
#include "platform/gtk/desktop/PreviewProtocol.h"
#include "platform/gtk/desktop/SingleInstance.h"
#include "platform/gtk/glib/GObjectRef.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <gio/gdesktopappinfo.h>
#include <iterator>
#include <system_error>

namespace quillmere::platform::gtk {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds refreshLimit{30};
constexpr int missingTool = 127;
constexpr const char* programInBundle = "Contents/MacOS/Quillmere";

std::string entryName() {
    return std::string(applicationId) + ".desktop";
}

/// Empty when it cannot be read.
std::string contentsOf(const FileUrl& file) {
    std::ifstream in(file.filesystemPath(), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// Replaces the file that a link leads to, not the link; an empty text takes it away.
void rewrite(const FileUrl& file, const std::string& before, const std::string& after) {
    std::error_code ignored;
    if (after == before)
        return;
    if (after.empty())
        fs::remove(file.filesystemPath(), ignored);
    else
        replaceFile(file.resolvingSymlinks(), after);
}

int runTool(const char* name, std::vector<std::string> arguments) {
    const GlibText tool(g_find_program_in_path(name));
    if (!tool)
        return missingTool;
    ChildProcess child({.executable = FileUrl(tool.get()), .arguments = std::move(arguments)});
    if (!child.waitUntil(steadyNow() + refreshLimit)) {
        child.kill();
        return ETIMEDOUT;
    }
    const auto status = child.wait();
    return status.signal != 0 ? status.signal : status.code;
}

struct AppListFree {
    void operator()(GList* list) const noexcept { g_list_free_full(list, g_object_unref); }
};

std::string nameOf(GAppInfo* application) {
    const char* id = application ? g_app_info_get_id(application) : nullptr;
    return id ? id : "";
}

/// The application that opens a type when this one does not; empty when no other does.
std::string otherApplication(const std::string& type) {
    const auto now = GObjectRef<GAppInfo>::adopt(g_app_info_get_default_for_type(type.c_str(), FALSE));
    if (const auto name = nameOf(now.get()); !name.empty() && name != entryName())
        return name;
    const std::unique_ptr<GList, AppListFree> all(g_app_info_get_all_for_type(type.c_str()));
    for (GList* item = all.get(); item; item = item->next)
        if (const auto name = nameOf(G_APP_INFO(item->data)); !name.empty() && name != entryName())
            return name;
    return {};
}

} // namespace

std::optional<FileUrl> bundleOfProgram(const FileUrl& program) {
    const std::string ending = std::string("/") + programInBundle;
    const std::string& path = program.path();
    if (!path.ends_with(ending) || path.size() == ending.size())
        return std::nullopt;
    return FileUrl(path.substr(0, path.size() - ending.size()));
}

FileUrl DesktopRegistration::entry() const {
    return dataFolder_.appending("applications/" + entryName());
}

FileUrl DesktopRegistration::previewService() const {
    return dataFolder_.appending(std::string("dbus-1/services/") + previewProtocol::busName + ".service");
}

/// Read from the file itself: to the desktop the entry of a program that is gone is none.
std::optional<FileUrl> DesktopRegistration::bundle() const {
    const KeyFile file(g_key_file_new());
    if (!g_key_file_load_from_file(file.get(), entry().path().c_str(), G_KEY_FILE_NONE, nullptr))
        return std::nullopt;
    const GlibText program(g_key_file_get_string(file.get(), G_KEY_FILE_DESKTOP_GROUP, "TryExec", nullptr));
    return program && g_path_is_absolute(program.get()) ? bundleOfProgram(FileUrl(program.get())) : std::nullopt;
}

int DesktopRegistration::add(const FileUrl& bundle, const std::vector<std::string>& types) const {
    const auto text = desktopEntry(bundle.appending(programInBundle), types);
    if (!text)
        return EINVAL;
    try {
        keepDefaults(types); // before the entry, or there would be a moment in which it takes them
        replaceFile(entry(), *text);
        copyIcons(bundle.appending("Contents/Resources"));
        return runTool("update-desktop-database", {"-q", entry().parent().path()});
    } catch (const std::system_error& error) {
        return error.code().value();
    }
}

/// An entry in a user's folder comes before those of the system, so it would become the default of all its types. This
/// list comes after what the user has chosen and says what was so before.
void DesktopRegistration::keepDefaults(const std::vector<std::string>& types) const {
    const FileUrl list = entry().parent().appending("mimeapps.list");
    const std::string before = contentsOf(list);
    TypeDefaults kept;
    for (const auto& type : types)
        if (auto application = otherApplication(type); !application.empty())
            kept.emplace(type, std::move(application));
    rewrite(list, before, withKeptDefaults(before, kept));
}

void DesktopRegistration::copyIcons(const FileUrl& resources) const {
    const fs::path from = resources.appending("icons/hicolor").filesystemPath();
    std::error_code ignored;
    for (const auto& item : fs::recursive_directory_iterator(from, ignored)) {
        if (!item.path().filename().string().starts_with(applicationId))
            continue; // the window's own symbols are read from the bundle
        const auto place = dataFolder_.appending("icons/hicolor/" + item.path().lexically_relative(from).string());
        if (const auto image = contentsOf(FileUrl(item.path())); !image.empty())
            rewrite(place, contentsOf(place), image);
    }
    const FileUrl theme = dataFolder_.appending("icons/hicolor");
    if (fs::exists(theme.appending("icon-theme.cache").filesystemPath(), ignored))
        runTool("gtk-update-icon-cache", {"-q", "-t", "-f", theme.path()});
}

void DesktopRegistration::removeIcons() const {
    const auto theme = dataFolder_.appending("icons/hicolor").filesystemPath();
    std::error_code ignored;
    std::vector<fs::path> ours;
    for (const auto& item : fs::recursive_directory_iterator(theme, ignored))
        if (item.path().filename().string().starts_with(applicationId))
            ours.push_back(item.path());
    for (const auto& icon : ours)
        fs::remove(icon, ignored);
}

void DesktopRegistration::remove(const FileUrl& bundle) const noexcept {
    try {
        if (this->bundle() != bundle)
            return;
        std::error_code ignored;
        fs::remove(entry().filesystemPath(), ignored);
        const FileUrl list = entry().parent().appending("mimeapps.list");
        const std::string before = contentsOf(list);
        rewrite(list, before, withKeptDefaults(before, {}));
        if (contentsOf(previewService()).find(bundle.path()) != std::string::npos)
            fs::remove(previewService().filesystemPath(), ignored);
        removeIcons();
        runTool("update-desktop-database", {"-q", entry().parent().path()});
        const FileUrl cache = entry().parent().appending("mimeinfo.cache");
        if (contentsOf(cache) == "[MIME Cache]\n")
            fs::remove(cache.filesystemPath(), ignored);
    } catch (const std::exception&) {
        // The entry names a program that is gone, so no desktop shows it.
    }
}

void DesktopRegistration::answerPreviews(const FileUrl& bundle) const {
    if (const auto text = previewServiceFile(bundle.appending(programInBundle)))
        replaceFile(previewService(), *text);
    else
        throwFileError(EINVAL, bundle.path());
}

} // namespace quillmere::platform::gtk
