#include "helpers/image-worker/PngSink.h"

#include "base/FileDescriptor.h"
#include "helpers/image-worker/ImageReader.h"

#include <csetjmp>
#include <cstddef>
#include <fcntl.h>
#include <png.h>
#include <unistd.h>
#include <zlib.h>

namespace quillmere::images {

namespace {

constexpr size_t codedBufferSize = 256 << 10;

void writeBytes(png_structp png, png_bytep bytes, size_t count) {
    const int file = *static_cast<const int*>(png_get_io_ptr(png));
    if (!writeAll(file, {reinterpret_cast<const char*>(bytes), count}))
        png_error(png, "write");
}

void ignoreWarning(png_structp, png_const_charp) {}

/// The encoder. It reports errors by long jumps, so the functions that call it hold nothing that would need destroying.
class Encoder {
public:
    explicit Encoder(int file)
        : file_(file), png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, ignoreWarning)) {
        if (png_)
            info_ = png_create_info_struct(png_);
    }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;
    ~Encoder() { png_destroy_write_struct(&png_, &info_); }

    bool begin(const VipsImage& image, const void* profile, size_t profileSize) {
        constexpr int colourTypes[]{PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                    PNG_COLOR_TYPE_RGBA};
        if (!info_ || setjmp(png_jmpbuf(png_)) != 0)
            return false;
        png_set_write_fn(png_, &file_, writeBytes, nullptr);
        png_set_benign_errors(png_, 1);
        png_set_compression_buffer_size(png_, codedBufferSize);
        png_set_compression_level(png_, 1);
        png_set_compression_strategy(png_, Z_HUFFMAN_ONLY);
        png_set_filter(png_, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
        png_set_IHDR(png_, info_, static_cast<png_uint_32>(image.Xsize), static_cast<png_uint_32>(image.Ysize), 8,
                     colourTypes[image.Bands - 1], PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
        if (profile)
            png_set_iCCP(png_, info_, "ICC profile", PNG_COMPRESSION_TYPE_BASE, static_cast<png_const_bytep>(profile),
                         static_cast<png_uint_32>(profileSize));
        png_write_info(png_, info_);
        return true;
    }

    bool writeRows(VipsRegion* region, const VipsRect& area) {
        if (hasFailed_ || setjmp(png_jmpbuf(png_)) != 0) {
            hasFailed_ = true;
            return false;
        }
        // The strip begins where the region's pixels begin.
        for (int y = 0; y < area.height; ++y)
            png_write_row(png_, region->data + std::ptrdiff_t{y} * region->bpl);
        return true;
    }

    bool end() {
        if (setjmp(png_jmpbuf(png_)) != 0)
            return false;
        png_write_end(png_, info_);
        return true;
    }

    bool hasFailed() const { return hasFailed_; }

private:
    int file_;
    png_structp png_;
    png_infop info_ = nullptr;
    bool hasFailed_ = false;
};

int takeRows(VipsRegion* region, VipsRect* area, void* encoder) {
    return static_cast<Encoder*>(encoder)->writeRows(region, *area) ? 0 : -1;
}

} // namespace

void writePng(VipsImage* image, const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    if (!file)
        throw WriteFailure();
    const void* profile = nullptr;
    size_t profileSize = 0;
    if (vips_image_get_typeof(image, VIPS_META_ICC_NAME) != 0 &&
        vips_image_get_blob(image, VIPS_META_ICC_NAME, &profile, &profileSize) != 0)
        profile = nullptr;
    Encoder encoder(file.get());
    if (!encoder.begin(*image, profile, profileSize))
        throw WriteFailure();
    if (vips_sink_disc(image, takeRows, &encoder) != 0) {
        if (encoder.hasFailed())
            throw WriteFailure();
        throw UnreadableImage();
    }
    if (!encoder.end())
        throw WriteFailure();
}

} // namespace quillmere::images
