#include "platform/gtk/desktop/DesktopServices.h"

#include "base/Clock.h"
#include "platform/common/AtomicFile.h"
#include "platform/common/ChildProcess.h"
#include "platform/gtk/desktop/DesktopEntry.h"
#include "platform/gtk/desktop/SingleInstance.h"
#include "platform/gtk/glib/GObjectRef.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <set>
#include <system_error>

namespace quillmere::platform::gtk {

namespace {

constexpr const char* unknownType = "application/octet-stream";
constexpr std::chrono::seconds refreshLimit{30};
constexpr int missingTool = 127;
/// Extensions for which the desktop's database has two types and would give the rarer one, or has none.
constexpr std::pair<std::string_view, const char*> preferredTypes[] = {
    {"apng", "image/apng"}, {"jfif", "image/jpeg"}, {"obj", "model/obj"}, {"otf", "font/otf"}, {"ts", "video/mp2t"}};

void copyIcon(const FileUrl& resources, const FileUrl& dataFolder) {
    const std::string name = std::string("icons/hicolor/scalable/apps/") + applicationId + ".svg";
    std::ifstream in(resources.appending(name).filesystemPath(), std::ios::binary);
    const std::string image(std::istreambuf_iterator<char>(in), {});
    if (in && !image.empty())
        replaceFile(dataFolder.appending(name), image);
}

int refreshDatabase(const FileUrl& applications) {
    const GlibText tool(g_find_program_in_path("update-desktop-database"));
    if (!tool)
        return missingTool;
    ChildProcess child({.executable = FileUrl(tool.get()), .arguments = {"-q", applications.path()}});
    if (!child.waitUntil(steadyNow() + refreshLimit)) {
        child.kill();
        return ETIMEDOUT;
    }
    const auto status = child.wait();
    return status.signal != 0 ? status.signal : status.code;
}

} // namespace

bool DesktopPasteboard::setString(const std::string& text) {
    GdkDisplay* display = gdk_display_get_default();
    if (!display)
        return false;
    // As bytes: the text may hold a NUL.
    const GlibBytes bytes(g_bytes_new(text.data(), text.size()));
    const auto provider = GObjectRef<GdkContentProvider>::adopt(
        gdk_content_provider_new_for_bytes("text/plain;charset=utf-8", bytes.get()));
    return gdk_clipboard_set_content(gdk_display_get_clipboard(display), provider.get());
}

std::optional<std::string> DesktopContentTypes::mimeType(const std::string& extension) const {
    if (extension.empty() || extension.find_first_of(std::string_view("/\0", 2)) != std::string::npos)
        return std::nullopt;
    for (const auto& [known, type] : preferredTypes)
        if (extension == known)
            return type;
    gboolean uncertain = FALSE;
    const GlibText type(g_content_type_guess(("x." + extension).c_str(), nullptr, 0, &uncertain));
    const GlibText mime(type ? g_content_type_get_mime_type(type.get()) : nullptr);
    if (!mime || (uncertain && std::string_view(mime.get()) == unknownType))
        return std::nullopt;
    return std::string(mime.get());
}

std::vector<std::string> DesktopWorkspace::documentTypes() const {
    std::set<std::string> types;
    const auto list = bundle_.propertyList();
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
                if (auto type = types_.mimeType(std::string(extension.get_string())); type && *type != unknownType)
                    types.insert(std::move(*type));
    }
    return {types.begin(), types.end()};
}

int DesktopWorkspace::registerApplication(const FileUrl& bundle) {
    if (!dataFolder_)
        return ENOENT;
    const auto entry = desktopEntry(bundle.appending("Contents/MacOS/Quillmere"), documentTypes());
    if (!entry)
        return EINVAL;
    const auto applications = dataFolder_->appending("applications");
    try {
        replaceFile(applications.appending(std::string(applicationId) + ".desktop"), *entry);
        copyIcon(bundle.appending("Contents/Resources"), *dataFolder_);
        return refreshDatabase(applications);
    } catch (const std::system_error& error) {
        return error.code().value();
    }
}

} // namespace quillmere::platform::gtk
