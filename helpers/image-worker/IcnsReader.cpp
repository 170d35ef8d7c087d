#include "helpers/image-worker/IcnsReader.h"

#include "helpers/image-worker/OldIcon.h"

#include <fstream>
#include <optional>
#include <string_view>
#include <utility>

namespace quillmere::images {

namespace {

using namespace std::string_view_literals;
using Bytes = std::vector<unsigned char>;

/// No icon file comes near it.
constexpr std::streamoff maximumFileSize = 256 << 20;
constexpr size_t headerSize = 8;
constexpr size_t typeSize = 4;

std::string readWhole(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    if (size < static_cast<std::streamoff>(headerSize) || size > maximumFileSize)
        throw UnreadableImage();
    std::string bytes(static_cast<size_t>(size), '\0');
    file.seekg(0);
    if (!file.read(bytes.data(), size))
        throw UnreadableImage();
    return bytes;
}

size_t bigEndian(std::string_view bytes) {
    size_t value = 0;
    for (const char byte : bytes)
        value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

/// The members up to the first that does not fit into the file.
std::vector<IconMember> membersOf(std::string_view file) {
    std::vector<IconMember> members;
    for (auto rest = file.substr(headerSize); rest.size() >= headerSize;) {
        const size_t length = bigEndian(rest.substr(typeSize, headerSize - typeSize));
        if (length < headerSize || length > rest.size())
            break;
        members.push_back({.type = rest.substr(0, typeSize), .contents = rest.substr(headerSize, length - headerSize)});
        rest.remove_prefix(length);
    }
    return members;
}

/// The largest member that is an image file of its own: that is how sizes from 128 up are stored.
std::optional<Image> largestImageFile(std::span<const IconMember> members) {
    std::optional<Image> largest;
    for (const auto& [type, contents] : members) {
        if (!contents.starts_with("\x89PNG"sv) && !contents.starts_with("\0\0\0\x0cjP  "sv) &&
            !contents.starts_with("\xff\x4f\xff\x51"sv))
            continue;
        try {
            Image image = imageFromBytes(std::make_shared<const Bytes>(contents.begin(), contents.end()));
            if (!largest || image.pixels->Xsize > largest->pixels->Xsize)
                largest = std::move(image);
        } catch (const UnreadableImage&) {
            // Another size may be whole.
        }
    }
    return largest;
}

} // namespace

Image readIcns(const std::string& path) {
    constexpr int largestOldSide = 128;
    const std::string file = readWhole(path);
    const auto members = membersOf(file);
    auto image = largestImageFile(members);
    if (image && image->pixels->Xsize >= largestOldSide)
        return std::move(*image);
    auto old = oldIcon(members);
    if (old && (!image || old->pixels->Xsize > image->pixels->Xsize))
        return std::move(*old);
    if (!image)
        throw UnreadableImage();
    return std::move(*image);
}

} // namespace quillmere::images
