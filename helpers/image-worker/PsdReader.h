#pragma once

#include "helpers/image-worker/ImageReader.h"

namespace quillmere::images {

/// The merged image of a layered document (versions 1 and 2), as every program that writes one stores it for others:
/// all colour modes but multichannel, 1 to 32 bits, plain or run-length coded. Throws UnreadableImage.
Image readPsd(const std::string& path);

} // namespace quillmere::images
