#pragma once

#include "helpers/image-worker/ImageReader.h"

namespace quillmere::images {

/// Develops a camera's raw file, upright, in sRGB with the camera's own white balance. Throws UnreadableImage.
Image readRaw(const std::string& path);

} // namespace quillmere::images
