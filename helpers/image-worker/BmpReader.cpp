#include "helpers/image-worker/BmpReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <vector>

namespace quillmere::images {

namespace {

struct Release {
    void operator()(GdkPixbufLoader* loader) const {
        // It complains about a loader that is let go while it is open.
        gdk_pixbuf_loader_close(loader, nullptr);
        g_object_unref(loader);
    }
};

std::uint32_t littleEndian(const std::array<unsigned char, 34>& header, size_t at, size_t bytes) {
    std::uint32_t value = 0;
    for (size_t i = bytes; i-- > 0;)
        value = value << 8 | header.at(at + i);
    return value;
}

/// The loader fills what is missing with black: half a picture would look like the whole one.
void requireAllRows(std::ifstream& file) {
    std::array<unsigned char, 34> header{};
    file.read(reinterpret_cast<char*>(header.data()), header.size());
    const auto headed = file.gcount() == static_cast<std::streamsize>(header.size());
    file.clear();
    file.seekg(0, std::ios::end);
    const auto size = static_cast<std::uint64_t>(file.tellg());
    file.seekg(0);
    constexpr std::uint32_t plain = 0;
    constexpr std::uint32_t plainWithMasks = 3;
    constexpr std::uint32_t oldHeader = 12;
    const std::uint32_t compression = littleEndian(header, 30, 4);
    if (headed && (littleEndian(header, 14, 4) == oldHeader || (compression != plain && compression != plainWithMasks)))
        return;
    const std::uint64_t width = littleEndian(header, 18, 4);
    const auto height = static_cast<std::int32_t>(littleEndian(header, 22, 4));
    const auto rows = static_cast<std::uint64_t>(std::abs(std::int64_t{height}));
    requireSize(width, rows);
    const std::uint64_t row = (width * littleEndian(header, 28, 2) + 31) / 32 * 4;
    if (!headed || littleEndian(header, 10, 4) + row * rows > size)
        throw UnreadableImage();
}

void refuseLarge(GdkPixbufLoader* loader, int width, int height, gpointer isTooLarge) {
    try {
        requireSize(static_cast<std::uint64_t>(std::max(width, 0)), static_cast<std::uint64_t>(std::max(height, 0)));
    } catch (const UnreadableImage&) {
        *static_cast<bool*>(isTooLarge) = true;
        gdk_pixbuf_loader_set_size(loader, 1, 1);
    }
}

} // namespace

Image readBmp(const std::string& path) {
    bool isTooLarge = false;
    const std::unique_ptr<GdkPixbufLoader, Release> loader(gdk_pixbuf_loader_new_with_type("bmp", nullptr));
    if (!loader)
        throw UnreadableImage();
    g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(refuseLarge), &isTooLarge);
    std::ifstream file(path, std::ios::binary);
    requireAllRows(file);
    std::vector<char> block(1 << 18);
    while (!isTooLarge && (file.read(block.data(), static_cast<std::streamsize>(block.size())), file.gcount() > 0))
        if (gdk_pixbuf_loader_write(loader.get(), reinterpret_cast<const guchar*>(block.data()),
                                    static_cast<gsize>(file.gcount()), nullptr) == FALSE)
            throw UnreadableImage();
    // It is closed here for its word on a file that ends too early.
    if (isTooLarge || gdk_pixbuf_loader_close(loader.get(), nullptr) == FALSE)
        throw UnreadableImage();
    const GdkPixbuf* decoded = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (!decoded)
        throw UnreadableImage();
    const int width = gdk_pixbuf_get_width(decoded);
    const int height = gdk_pixbuf_get_height(decoded);
    const int bands = gdk_pixbuf_get_n_channels(decoded);
    const auto row = static_cast<size_t>(width) * static_cast<size_t>(bands);
    const guint8* pixels = gdk_pixbuf_read_pixels(decoded);
    const auto stride = static_cast<size_t>(gdk_pixbuf_get_rowstride(decoded));
    auto samples = std::make_shared<std::vector<unsigned char>>();
    samples->reserve(row * static_cast<size_t>(height));
    for (size_t y = 0; y < static_cast<size_t>(height); ++y)
        samples->insert(samples->end(), pixels + y * stride, pixels + y * stride + row);
    return imageOver(std::move(samples), width, height, bands);
}

} // namespace quillmere::images
