#pragma once

#include <exception>
#include <string>
#include <vips/vips.h>

namespace quillmere::images {

/// The output could not be created or written.
class WriteFailure : public std::exception {
public:
    const char* what() const noexcept override { return "write failure"; }
};

/// Writes an image of 8-bit samples and 1 to 4 bands as PNG, row by row while it is decoded. Made for speed: rows are
/// predicted from the left and Huffman coded, nothing more. Throws WriteFailure, or UnreadableImage when decoding fails
/// on the way.
void writePng(VipsImage* image, const std::string& path);

} // namespace quillmere::images
