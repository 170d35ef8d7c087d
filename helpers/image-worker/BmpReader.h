#pragma once

#include "helpers/image-worker/ImageReader.h"

namespace quillmere::images {

/// Reads a Windows bitmap. Throws UnreadableImage.
Image readBmp(const std::string& path);

} // namespace quillmere::images
