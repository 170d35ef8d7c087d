#pragma once

#include "base/FileDescriptor.h"

#include <webkit/webkit-web-process-extension.h>

#include <cstdint>
#include <functional>
#include <string>

namespace quillmere::platform::gtk {

/// The way from the web process to the program. Main thread only. Answers arrive there too, and hold no descriptor for
/// a refusal.
namespace shell {

/// Remembers the extension object, which lives as long as the process.
void connectTo(WebKitWebProcessExtension* extension);

/// Asks for a pipe with a range of the file behind an address.
void askForRange(const std::string& address, uint64_t offset, uint64_t length,
                 std::function<void(FileDescriptor pipe)> answer);
/// Asks for a socket on which pipes of the file behind an address can be had, and for the file's size.
void askForChannel(const std::string& address, std::function<void(FileDescriptor socket, uint64_t size)> answer);

} // namespace shell

} // namespace quillmere::platform::gtk
