#pragma once

#include "helpers/image-worker/ImageReader.h"

namespace quillmere::images {

/// The largest image of an icon file. Throws UnreadableImage.
Image readIcns(const std::string& path);

} // namespace quillmere::images
