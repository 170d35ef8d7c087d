#pragma once

#include <exception>
#include <memory>
#include <string>
#include <vector>
#include <vips/vips.h>

namespace quillmere::images {

/// The file holds no image that we can decode, or one too large.
class UnreadableImage : public std::exception {
public:
    const char* what() const noexcept override { return "unreadable image"; }
};

/// More pixels than any honest picture has.
inline constexpr std::uint64_t maximumPixels = 400'000'000;

struct ObjectDeleter {
    void operator()(VipsImage* image) const noexcept { g_object_unref(image); }
};
using VipsImageRef = std::unique_ptr<VipsImage, ObjectDeleter>;

/// Makes the decoders ready, once, before anything is read. False when they cannot work. Those that their makers do not
/// trust with hostile files stay shut, but for the one that we need.
bool openDecoders(const char* program);

/// An image, its pixels decoded as they are asked for, and the memory that it reads from (none when it reads a file).
struct Image {
    std::shared_ptr<const void> memory;
    VipsImageRef pixels;
};

/// Throws UnreadableImage unless both sides are positive and the image is small enough.
void requireSize(std::uint64_t width, std::uint64_t height);

/// An image of 8-bit samples, interleaved, over memory that the result keeps.
Image imageOver(std::shared_ptr<const std::vector<unsigned char>> samples, int width, int height, int bands);

/// Decodes the PNG, JPEG or JPEG 2000 image in the bytes, which the result keeps.
Image imageFromBytes(std::shared_ptr<const std::vector<unsigned char>> bytes);

/// Opens the first image of a file. The format is told by the contents; of what looks like TIFF, the extension tells
/// whether it is looked at as a camera file first. Throws UnreadableImage.
Image openImage(const std::string& path);

/// The image upright, its longer side at most `maxSide`, as grey or sRGB with or without alpha, 8 bits a sample.
VipsImageRef fitted(const Image& image, int maxSide);

} // namespace quillmere::images
