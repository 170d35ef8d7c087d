#pragma once

#include "base/FileDescriptor.h"

#include <webkit/webkit-web-process-extension.h>

#include <functional>
#include <string>

namespace quillmere::platform::gtk {

/// The way from the web process to the program. Main thread only.
namespace shell {

/// Remembers the extension object, which lives as long as the process.
void connectTo(WebKitWebProcessExtension* extension);
/// Tells the program that media sources are registered.
void reportReady();
/// Asks for the file behind an address; the answer arrives on the main thread and holds no descriptor for a refusal.
void askForFile(const std::string& address, std::function<void(FileDescriptor)> answer);

} // namespace shell

} // namespace quillmere::platform::gtk
