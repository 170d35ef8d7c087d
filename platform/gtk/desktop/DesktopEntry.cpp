#include "platform/gtk/desktop/DesktopEntry.h"

#include "base/Text.h"

#include "platform/gtk/desktop/SingleInstance.h"

#include <algorithm>

namespace quillmere::platform::gtk {

namespace {

/// An argument of the "Exec" key: quoted as a shell argument, its percent signs doubled, then escaped as any string of
/// the file, which doubles every backslash again.
std::string execArgument(const std::string& argument) {
    std::string text = "\"";
    for (const char character : argument) {
        if (character == '%')
            text += "%%";
        else if (character == '\\')
            text += R"(\\\\)";
        else if (character == '"' || character == '`' || character == '$')
            text += std::string(R"(\\)") + character;
        else
            text += character;
    }
    return text + "\"";
}

} // namespace

std::optional<std::string> desktopEntry(const FileUrl& program, const std::vector<std::string>& mimeTypes) {
    const auto isControl = [](char character) { return static_cast<unsigned char>(character) < 0x20; };
    // The Desktop Entry format forbids "=" in a program's name.
    if (!isValidUtf8(program.path()) || std::ranges::any_of(program.path(), isControl) ||
        program.path().find('=') != std::string::npos)
        return std::nullopt;
    std::string text = "[Desktop Entry]\n"
                       "Type=Application\n"
                       "Version=1.0\n"
                       "Name=Quillmere\n"
                       "GenericName=File Viewer\n"
                       "Comment=Look at files, folders and archives\n"
                       "Categories=Utility;Viewer;\n"
                       "Terminal=false\n"
                       "StartupNotify=true\n";
    text += std::string("StartupWMClass=") + applicationId + "\n";
    text += std::string("Icon=") + applicationId + "\n";
    text += "Exec=" + execArgument(program.path()) + " %f\n";
    if (!mimeTypes.empty()) {
        text += "MimeType=";
        for (const auto& type : mimeTypes)
            text += type + ";";
        text += "\n";
    }
    return text;
}

} // namespace quillmere::platform::gtk
