// Whatever a layered document holds: an image has the size and the colours that its header names, and so little data
// never becomes so large an image.

#include "fuzz/PictureFuzz.h"
#include "helpers/image-worker/PsdReader.h"

using namespace quillmere;
using fuzz::require;

namespace {

constexpr int maxSide = 256;
/// Two bytes stand for at most 128, and each bit of a byte for a pixel.
constexpr uint64_t mostPixelsToAByte = 64;

void requireTrueToHeader(const VipsImage& pixels, const fuzz::MemoryFile& document, size_t size) {
    const auto height = document.numberAt(14);
    const auto width = document.numberAt(18);
    const auto mode = document.numberAt(22) & 0xffff;
    require(static_cast<uint32_t>(pixels.Xsize) == width && static_cast<uint32_t>(pixels.Ysize) == height);
    require(uint64_t{width} * height <= images::maximumPixels);
    require(uint64_t{width} * height <= size * mostPixelsToAByte * (mode == 0 ? 8 : 1));
    const int colours = mode < 2 || mode == 8 ? 1 : 3;
    require(pixels.Bands == colours || (pixels.Bands == colours + 1 && mode != 2 && mode != 9));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::startDecoders();
    static const fuzz::MemoryFile document("document");
    document.hold(data, size);
    try {
        const auto image = images::readPsd(document.path());
        requireTrueToHeader(*image.pixels, document, size);
        fuzz::requirePng(image, maxSide);
    } catch (const images::UnreadableImage&) {
        vips_error_clear();
    }
    return 0;
}
