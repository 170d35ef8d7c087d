#pragma once

#include <cstdint>

namespace quillmere::platform::gtk {

/// What the program and its extension in the web process agree on. File bytes travel in pipes that the program fills. A
/// descriptor of the file itself would not do, however it was opened: its holder could open it again for writing, by
/// its name under /proc/self/fd.
namespace reads {

inline constexpr const char* scheme = "quillmere";
/// Where the page lives.
inline constexpr const char* pagePrefix = "quillmere://app/";

/// Extension to program: an address, an offset and a length (stt). The reply carries a pipe with that range, shorter at
/// the end of the file, or no descriptor for a refusal.
inline constexpr const char* rangeMessage = "quillmere.range";
/// The function of the page's main frame that asks for it: `(url, offset, length, buffer, done)`.
inline constexpr const char* rangeFunction = "quillMereRead";

/// Extension to program: an address (s). The reply carries the size of the file (t) and a socket on which media sources
/// ask for pipes themselves, since their threads may never wait for the main one; or nothing for a refusal.
inline constexpr const char* channelMessage = "quillmere.channel";

/// Extension to program, on such a socket: the file from an offset on.
struct PipeRequest {
    uint64_t number = 0;
    uint64_t offset = 0;
};
/// Program to extension: the same number, the size of the file now, and a pipe.
struct PipeReply {
    uint64_t number = 0;
    uint64_t size = 0;
};

} // namespace reads

} // namespace quillmere::platform::gtk
