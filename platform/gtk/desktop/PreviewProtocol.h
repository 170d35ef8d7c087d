#pragma once

#include "base/FileUrl.h"

#include <optional>
#include <string>

namespace quillmere::platform::gtk {

/// How the desktop's file manager asks for a preview of what is selected when Space is pressed.
namespace previewProtocol {

inline constexpr const char* busName = "org.gnome.NautilusPreviewer";
inline constexpr const char* objectPath = "/org/gnome/NautilusPreviewer";
inline constexpr const char* interfaceName = "org.gnome.NautilusPreviewer2";
inline constexpr const char* introspection = "<node><interface name='org.gnome.NautilusPreviewer2'>"
                                             "<method name='ShowFile'><arg type='s' name='FileUri' direction='in'/>"
                                             "<arg type='s' name='WindowHandle' direction='in'/><arg type='b' "
                                             "name='CloseIfAlreadyShown' direction='in'/></method>"
                                             "<method name='Close'/>"
                                             "<signal name='SelectionEvent'><arg type='u' name='Direction'/></signal>"
                                             "<property name='Visible' type='b' access='read'/>"
                                             "<property name='ParentHandle' type='s' access='read'/>"
                                             "</interface></node>";

} // namespace previewProtocol

/// The session bus's service file by which this program is started for previews; nothing for a program whose path such
/// a file cannot name.
std::optional<std::string> previewServiceFile(const FileUrl& program);

} // namespace quillmere::platform::gtk
