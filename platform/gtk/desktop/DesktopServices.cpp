#include "platform/gtk/desktop/DesktopServices.h"

#include "platform/gtk/glib/GObjectRef.h"

namespace quillmere::platform::gtk {

namespace {

constexpr const char* unknownType = "application/octet-stream";
/// Extensions for which the desktop's database has two types and would give the rarer one, or has none.
constexpr std::pair<std::string_view, const char*> preferredTypes[] = {
    {"apng", "image/apng"}, {"jfif", "image/jpeg"}, {"obj", "model/obj"}, {"otf", "font/otf"}, {"ts", "video/mp2t"}};

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

} // namespace quillmere::platform::gtk
