#include "helpers/image-worker/ImageReader.h"

#include "base/FileUrl.h"
#include "helpers/image-worker/BmpReader.h"
#include "helpers/image-worker/IcnsReader.h"
#include "helpers/image-worker/PsdReader.h"
#include "helpers/image-worker/RawReader.h"

#include <array>
#include <fstream>
#include <set>
#include <string_view>
#include <utility>

namespace quillmere::images {

namespace {

using namespace std::string_view_literals;

bool isCameraFile(const std::string& path) {
    static const std::set<std::string> extensions{"raw", "dng", "cr2", "nef", "arw"};
    return extensions.contains(FileUrl(path).lowerExtension());
}

std::string headOf(const std::string& path) {
    std::array<char, 16> head{};
    std::ifstream file(path, std::ios::binary);
    file.read(head.data(), head.size());
    return {head.data(), static_cast<size_t>(file.gcount())};
}

VipsImageRef owned(VipsImage* image) {
    if (!image)
        throw UnreadableImage();
    return VipsImageRef(image);
}

/// By reference: the arguments of a call may be evaluated in any order.
VipsImageRef loaded(int status, VipsImage* const& image) {
    return owned(status == 0 ? image : nullptr);
}

/// Whether the contents are of a format that no camera file has.
bool isPicture(std::string_view head) {
    return head.starts_with("\x89PNG"sv) || head.starts_with("\xff\xd8\xff"sv) || head.starts_with("8BPS") ||
           head.starts_with("icns") || head.starts_with("GIF8") || head.starts_with("BM") ||
           head.starts_with("\0\0\0\x0cjP  "sv) || head.starts_with("\xff\x4f\xff\x51"sv);
}

VipsImageRef loadFile(std::string_view head, const std::string& path) {
    const auto is = [head](std::string_view magic, size_t at = 0) {
        return head.substr(std::min(at, head.size())).starts_with(magic);
    };
    const char* file = path.c_str();
    VipsImage* image = nullptr;
    // A truncated image is no image: half a picture would look like the whole one.
    const auto load = [&](auto* loader) {
        return loaded(
            loader(file, &image, "access", VIPS_ACCESS_SEQUENTIAL, "fail_on", VIPS_FAIL_ON_TRUNCATED, nullptr), image);
    };
    if (is("II*\0"sv) || is("MM\0*"sv) || is("II+\0"sv) || is("MM\0+"sv))
        return load(vips_tiffload);
    if (is("ftyp", 4))
        return load(vips_heifload);
    if (is("\0\0\0\x0cjP  "sv) || is("\xff\x4f\xff\x51"sv))
        return load(vips_jp2kload);
    if (is("\x89PNG\r\n\x1a\n"sv))
        return load(vips_pngload);
    if (is("\xff\xd8\xff"sv))
        return load(vips_jpegload);
    if (is("GIF8"))
        return load(vips_gifload);
    if (is("RIFF") && is("WEBP", 8))
        return load(vips_webpload);
    throw UnreadableImage();
}

} // namespace

bool openDecoders(const char* program) {
    if (vips_init(program) != 0)
        return false;
    vips_block_untrusted_set(TRUE);
    vips_operation_block_set("VipsForeignLoadJp2k", FALSE);
    vips_cache_set_max(0);
    return true;
}

void requireSize(std::uint64_t width, std::uint64_t height) {
    if (width == 0 || height == 0 || width > maximumPixels || height > maximumPixels / width)
        throw UnreadableImage();
}

Image imageOver(std::shared_ptr<const std::vector<unsigned char>> samples, int width, int height, int bands) {
    auto pixels =
        owned(vips_image_new_from_memory(samples->data(), samples->size(), width, height, bands, VIPS_FORMAT_UCHAR));
    pixels->Type = bands < 3 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB;
    return {std::move(samples), std::move(pixels)};
}

Image imageFromBytes(std::shared_ptr<const std::vector<unsigned char>> bytes) {
    auto pixels =
        owned(vips_image_new_from_buffer(bytes->data(), bytes->size(), "", "access", VIPS_ACCESS_SEQUENTIAL, nullptr));
    return {std::move(bytes), std::move(pixels)};
}

Image openImage(const std::string& path) {
    const std::string head = headOf(path);
    if (isCameraFile(path) && !isPicture(head))
        // Camera files look like TIFF, and most hold a small picture that a TIFF reader would take for the whole.
        if (auto developed = readRaw(path))
            return std::move(*developed);
    if (head.starts_with("8BPS"))
        return readPsd(path);
    if (head.starts_with("icns"))
        return readIcns(path);
    if (head.starts_with("BM"))
        return readBmp(path);
    return {nullptr, loadFile(head, path)};
}

VipsImageRef fitted(const Image& image, int maxSide) {
    const VipsImage& source = *image.pixels;
    requireSize(static_cast<std::uint64_t>(source.Xsize), static_cast<std::uint64_t>(source.Ysize));
    VipsImage* next = nullptr;
    auto result = loaded(
        vips_thumbnail_image(image.pixels.get(), &next, maxSide, "height", maxSide, "size", VIPS_SIZE_DOWN, nullptr),
        next);
    const bool isGrey = result->Type == VIPS_INTERPRETATION_B_W || result->Type == VIPS_INTERPRETATION_GREY16 ||
                        (result->Type == VIPS_INTERPRETATION_MULTIBAND && result->Bands < 3);
    if (result->Type == VIPS_INTERPRETATION_CMYK && vips_image_get_typeof(result.get(), VIPS_META_ICC_NAME) != 0) {
        if (vips_icc_transform(result.get(), &next, "srgb", "embedded", TRUE, nullptr) == 0)
            result = owned(next);
    }
    const auto space = isGrey ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB;
    if (result->Type != space && result->Type != VIPS_INTERPRETATION_MULTIBAND)
        result = loaded(vips_colourspace(result.get(), &next, space, nullptr), next);
    if (result->BandFmt != VIPS_FORMAT_UCHAR)
        result = loaded(vips_cast_uchar(result.get(), &next, nullptr), next);
    if (result->Bands > 4)
        result = loaded(vips_extract_band(result.get(), &next, 0, "n", 3, nullptr), next);
    return result;
}

} // namespace quillmere::images
