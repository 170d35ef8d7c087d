#include "platform/gtk/desktop/DesktopEntry.h"

#include "base/Text.h"

#include "platform/gtk/desktop/PreviewProtocol.h"
#include "platform/gtk/desktop/SingleInstance.h"
#include "platform/gtk/glib/GObjectRef.h"

#include <algorithm>

namespace quillmere::platform::gtk {

namespace {

/// Plain programs of a desktop split the "Exec" key at its spaces and take quotes for part of the name, so only what
/// must be quoted is.
bool needsQuotes(const std::string& argument) {
    return argument.find_first_of(" \t\n\"'\\><~|&;$*?#()`") != std::string::npos;
}

/// An argument of the "Exec" key: its percent signs doubled, quoted as a shell argument where it must be, then escaped
/// as any string of the file, which doubles every backslash again.
std::string execArgument(const std::string& argument) {
    std::string text;
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
    return needsQuotes(argument) ? "\"" + text + "\"" : text;
}

/// A string of the file.
std::string stringValue(const std::string& value) {
    std::string text;
    for (const char character : value)
        text += character == '\\' ? R"(\\)" : std::string(1, character);
    return text;
}

bool isNameable(const FileUrl& program) {
    const auto isControl = [](char character) { return static_cast<unsigned char>(character) < 0x20; };
    return isValidUtf8(program.path()) && std::ranges::none_of(program.path(), isControl);
}

} // namespace

std::optional<std::string> desktopEntry(const FileUrl& program, const std::vector<std::string>& mimeTypes) {
    // The Desktop Entry format forbids "=" in a program's name.
    if (!isNameable(program) || program.path().find('=') != std::string::npos)
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
    text += "TryExec=" + stringValue(program.path()) + "\n"; // an entry of a program that is gone is none
    text += "Exec=" + execArgument(program.path()) + " %f\n";
    if (!mimeTypes.empty()) {
        text += "MimeType=";
        for (const auto& type : mimeTypes)
            text += type + ";";
        text += "\n";
    }
    return text;
}

std::optional<std::string> previewServiceFile(const FileUrl& program) {
    if (!isNameable(program))
        return std::nullopt;
    const GlibText quoted(g_shell_quote(program.path().c_str()));
    return std::string("[D-BUS Service]\nName=") + previewProtocol::busName +
           "\nExec=" + (needsQuotes(program.path()) ? quoted.get() : program.path()) + "\n";
}

} // namespace quillmere::platform::gtk
