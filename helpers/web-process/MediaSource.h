#pragma once

namespace quillmere::platform::gtk {

/// Registers a media source for the private scheme: seekable, read through pipes that the program fills.
/// False when the media framework cannot be had.
bool registerMediaSource();

} // namespace quillmere::platform::gtk
