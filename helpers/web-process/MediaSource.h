#pragma once

namespace quillmere::platform::gtk {

/// Registers a media source for the private scheme: seekable, read in place from the file that the program hands over.
/// False when the media framework cannot be had.
bool registerMediaSource();

} // namespace quillmere::platform::gtk
