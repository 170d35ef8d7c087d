#pragma once

#include "fuzz/Require.h"
#include "helpers/image-worker/ImageReader.h"
#include "helpers/image-worker/PngSink.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace quillmere::fuzz {

/// A file that lies in memory only, used again and again.
class MemoryFile {
public:
    explicit MemoryFile(const char* name) : descriptor_(memfd_create(name, MFD_CLOEXEC)) { require(descriptor_ >= 0); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(descriptor_); }

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }
    void hold(const uint8_t* data, size_t size) const {
        require(::ftruncate(descriptor_, 0) == 0);
        require(::pwrite(descriptor_, data, size, 0) == static_cast<ssize_t>(size));
    }
    /// The four bytes at the place, the most significant first.
    uint32_t numberAt(off_t place) const {
        unsigned char bytes[4]{};
        require(::pread(descriptor_, bytes, sizeof bytes, place) == sizeof bytes);
        return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
    }

private:
    int descriptor_;
};

/// Decoders that work on one thread: what an input does shall not depend on chance.
inline void startDecoders() {
    static const bool started = [] {
        setenv("VIPS_WARNING", "0", 1); // hostile files make for many words
        vips_concurrency_set(1);
        return images::openDecoders("fuzz");
    }();
    require(started);
}

/// Brings the image to its end: a PNG of at most `maxSide`, of the size that was promised. The pixels may prove
/// unreadable on the way.
inline void requirePng(const images::Image& image, int maxSide) {
    static const MemoryFile png("png");
    try {
        const auto fitted = images::fitted(image, maxSide);
        require(fitted->Xsize >= 1 && fitted->Xsize <= maxSide && fitted->Xsize <= image.pixels->Xsize);
        require(fitted->Ysize >= 1 && fitted->Ysize <= maxSide && fitted->Ysize <= image.pixels->Ysize);
        require(fitted->BandFmt == VIPS_FORMAT_UCHAR && fitted->Bands >= 1 && fitted->Bands <= 4);
        images::writePng(fitted.get(), png.path());
        require(png.numberAt(16) == static_cast<uint32_t>(fitted->Xsize));
        require(png.numberAt(20) == static_cast<uint32_t>(fitted->Ysize));
    } catch (const images::UnreadableImage&) {
        vips_error_clear();
    }
}

} // namespace quillmere::fuzz
