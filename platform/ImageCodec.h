#pragma once

#include "base/FileUrl.h"

namespace quillmere::platform {

enum class ImageOutcome { written, unreadable, writeFailed };

/// Decodes images. Any thread but the main one; may block for up to a minute.
class ImageCodec {
public:
    virtual ~ImageCodec() = default;
    /// Decodes the first image of `source`, turns it upright, scales its longer side down to at most `maxSide` pixels
    /// and writes it to `output` as PNG. A result that is not `written` leaves nothing at `output`.
    virtual ImageOutcome writeThumbnail(const FileUrl& source, const FileUrl& output, int maxSide) = 0;
};

} // namespace quillmere::platform
