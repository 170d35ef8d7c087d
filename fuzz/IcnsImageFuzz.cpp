// Whatever an icon file holds: an image is one that an icon can have, and larger than in the old forms only when a
// member is an image file of its own.

#include "fuzz/PictureFuzz.h"
#include "helpers/image-worker/IcnsReader.h"

#include <string_view>

using namespace quillmere;
using fuzz::require;

namespace {

constexpr int maxSide = 256;

bool hasImageFile(std::string_view icon) {
    using namespace std::string_view_literals;
    const auto holds = [icon](std::string_view magic) { return icon.find(magic) != std::string_view::npos; };
    return holds("\x89PNG"sv) || holds("\0\0\0\x0cjP  "sv) || holds("\xff\x4f\xff\x51"sv);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::startDecoders();
    static const fuzz::MemoryFile icon("icon");
    icon.hold(data, size);
    try {
        const auto image = images::readIcns(icon.path());
        const int side = image.pixels->Xsize;
        const bool isOldSize = side == image.pixels->Ysize && (side == 16 || side == 32 || side == 48 || side == 128);
        require(hasImageFile(fuzz::textOf(data, size)) || isOldSize);
        fuzz::requirePng(image, maxSide);
    } catch (const images::UnreadableImage&) {
        vips_error_clear();
    }
    return 0;
}
