#pragma once

#include "helpers/image-worker/ImageReader.h"

#include <optional>

namespace quillmere::images {

/// Develops a camera's raw file, upright, in sRGB with the camera's own white balance. Nothing when it is of no known
/// camera; throws UnreadableImage when it is damaged.
std::optional<Image> readRaw(const std::string& path);

} // namespace quillmere::images
