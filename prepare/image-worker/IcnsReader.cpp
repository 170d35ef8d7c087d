#include "prepare/image-worker/IcnsReader.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

extern "C" {
#include <icns.h> // a C header that does not say so
}

namespace quillmere::images {

namespace {

using namespace std::string_view_literals;
using Bytes = std::vector<unsigned char>;

/// No icon file comes near it.
constexpr std::streamoff maximumFileSize = 256 << 20;
constexpr size_t headerSize = 8;

/// Members without a format of their own, the best first.
constexpr icns_type_t oldMembers[]{ICNS_128X128_32BIT_DATA, ICNS_48x48_32BIT_DATA, ICNS_32x32_32BIT_DATA,
                                   ICNS_16x16_32BIT_DATA,   ICNS_48x48_8BIT_DATA,  ICNS_32x32_8BIT_DATA,
                                   ICNS_16x16_8BIT_DATA,    ICNS_48x48_1BIT_DATA,  ICNS_32x32_1BIT_DATA};

std::string_view textOf(const Bytes& bytes, size_t at, size_t length) {
    return {reinterpret_cast<const char*>(bytes.data()) + at, length};
}

size_t bigEndian(const Bytes& bytes, size_t at) {
    return size_t{bytes[at]} << 24 | size_t{bytes[at + 1]} << 16 | size_t{bytes[at + 2]} << 8 | bytes[at + 3];
}

Bytes readWhole(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    if (size < static_cast<std::streamoff>(headerSize) || size > maximumFileSize)
        throw UnreadableImage();
    Bytes bytes(static_cast<size_t>(size));
    file.seekg(0);
    if (!file.read(reinterpret_cast<char*>(bytes.data()), size))
        throw UnreadableImage();
    return bytes;
}

/// The largest member that is an image file of its own: that is how sizes from 128 up are stored.
std::optional<Image> largestMember(const Bytes& bytes) {
    std::optional<Image> largest;
    for (size_t at = headerSize; at + headerSize <= bytes.size();) {
        const size_t length = bigEndian(bytes, at + 4);
        if (length < headerSize || length > bytes.size() - at)
            break;
        const auto content = textOf(bytes, at + headerSize, length - headerSize);
        const auto start = bytes.begin() + static_cast<std::ptrdiff_t>(at + headerSize);
        at += length;
        if (!content.starts_with("\x89PNG"sv) && !content.starts_with("\0\0\0\x0cjP  "sv) &&
            !content.starts_with("\xff\x4f\xff\x51"sv))
            continue;
        try {
            const auto end = start + static_cast<std::ptrdiff_t>(content.size());
            Image image = imageFromBytes(std::make_shared<const Bytes>(start, end));
            if (!largest || image.pixels->Xsize > largest->pixels->Xsize)
                largest = std::move(image);
        } catch (const UnreadableImage&) {
            // Another size may be whole.
        }
    }
    return largest;
}

struct FileCloser {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
struct FamilyDeleter {
    void operator()(icns_family_t* family) const noexcept { std::free(family); }
};

/// The largest of the old members: run-length coded colours with a mask beside them.
std::optional<Image> largestOldMember(const std::string& path) {
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rbe"));
    icns_family_t* read = nullptr;
    icns_set_print_errors(0);
    if (!file || icns_read_family_from_file(file.get(), &read) != ICNS_STATUS_OK)
        return std::nullopt;
    const std::unique_ptr<icns_family_t, FamilyDeleter> family(read);
    for (const icns_type_t type : oldMembers) {
        icns_image_t image{};
        if (icns_get_image32_with_mask_from_family(family.get(), type, &image) != ICNS_STATUS_OK)
            continue;
        const size_t size = size_t{image.imageWidth} * image.imageHeight * 4;
        const bool isWhole = image.imageData && size > 0 && image.imageDataSize >= size;
        auto samples = isWhole ? std::make_shared<const Bytes>(image.imageData, image.imageData + size) : nullptr;
        const auto width = static_cast<int>(image.imageWidth);
        const auto height = static_cast<int>(image.imageHeight);
        icns_free_image(&image);
        if (samples)
            return imageOver(std::move(samples), width, height, 4);
    }
    return std::nullopt;
}

} // namespace

Image readIcns(const std::string& path) {
    constexpr int largestOldSide = 128;
    auto member = largestMember(readWhole(path));
    if (member && member->pixels->Xsize >= largestOldSide)
        return std::move(*member);
    auto old = largestOldMember(path);
    if (old && (!member || old->pixels->Xsize > member->pixels->Xsize))
        return std::move(*old);
    if (!member)
        throw UnreadableImage();
    return std::move(*member);
}

} // namespace quillmere::images
