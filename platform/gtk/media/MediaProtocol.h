#pragma once

namespace quillmere::platform::gtk {

/// What the program and its extension in the web process agree on. Media elements cannot read a private scheme, so the
/// extension offers the media framework a source for it and asks the program for the file behind each address.
namespace media {

inline constexpr const char* scheme = "quillmere";

/// Extension to program, once: the source for the scheme is registered. No parameters, no reply.
inline constexpr const char* readyMessage = "quillmere.media.ready";
/// Extension to program: a string, the address. The reply carries one read-only file descriptor, or none for a refusal.
inline constexpr const char* openMessage = "quillmere.media.open";

} // namespace media

} // namespace quillmere::platform::gtk
