#include "helpers/image-worker/PsdReader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <fstream>
#include <utility>

namespace quillmere::images {

namespace {

using Bytes = std::vector<unsigned char>;

enum class Mode { bitmap = 0, grey = 1, indexed = 2, rgb = 3, cmyk = 4, duotone = 8, lab = 9 };
enum class Coding { plain = 0, runLength = 1 };

constexpr std::uint16_t profileResource = 1039;
constexpr size_t maximumProfile = 16 << 20;

/// Big-endian numbers from a file; past its end, UnreadableImage.
class Source {
public:
    explicit Source(const std::string& path) : file_(path, std::ios::binary | std::ios::ate) {
        size_ = position();
        moveTo(0);
    }

    void read(unsigned char* bytes, size_t count) {
        if (!file_.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(count)))
            throw UnreadableImage();
    }
    template <typename Number>
    Number number() {
        std::array<unsigned char, sizeof(Number)> bytes{};
        read(bytes.data(), bytes.size());
        std::uint64_t value = 0;
        for (const unsigned char byte : bytes)
            value = value << 8 | byte;
        return static_cast<Number>(value);
    }
    std::uint64_t position() { return static_cast<std::uint64_t>(file_.tellg()); }
    void moveTo(std::uint64_t position) {
        if (position > static_cast<std::uint64_t>(INT64_MAX) || !file_.seekg(static_cast<std::streamoff>(position)))
            throw UnreadableImage();
    }

    /// Before memory is taken for them: a file may claim much and hold little.
    void requireMore(std::uint64_t count) {
        const auto here = position();
        if (here > size_ || count > size_ - here)
            throw UnreadableImage();
    }

private:
    std::ifstream file_;
    std::uint64_t size_ = 0;
};

struct Header {
    bool isLarge = false; // version 2: some lengths have twice the size
    unsigned channels = 0;
    unsigned width = 0;
    unsigned height = 0;
    unsigned depth = 0;
    Mode mode{};

    size_t rowBytes() const { return (size_t{width} * depth + 7) / 8; }
    std::uint64_t length(Source& source) const {
        return isLarge ? source.number<std::uint64_t>() : source.number<std::uint32_t>();
    }
};

unsigned colourChannels(Mode mode) {
    switch (mode) {
    case Mode::bitmap:
    case Mode::grey:
    case Mode::indexed:
    case Mode::duotone:
        return 1;
    case Mode::rgb:
    case Mode::lab:
        return 3;
    case Mode::cmyk:
        return 4;
    }
    throw UnreadableImage();
}

Header readHeader(Source& source) {
    Header header;
    source.moveTo(4);
    const auto version = source.number<std::uint16_t>();
    source.moveTo(12);
    header.isLarge = version == 2;
    header.channels = source.number<std::uint16_t>();
    header.height = source.number<std::uint32_t>();
    header.width = source.number<std::uint32_t>();
    header.depth = source.number<std::uint16_t>();
    header.mode = static_cast<Mode>(source.number<std::uint16_t>());
    requireSize(header.width, header.height);
    const bool isDepthKnown = header.depth == 8 || header.depth == 16 || header.depth == 32;
    if ((version != 1 && version != 2) || header.channels > 56 || header.channels < colourChannels(header.mode) ||
        (header.mode == Mode::bitmap ? header.depth != 1 : !isDepthKnown))
        throw UnreadableImage();
    return header;
}

Bytes readPalette(Source& source, Mode mode) {
    const auto length = source.number<std::uint32_t>();
    const auto next = source.position() + length;
    Bytes palette;
    if (mode == Mode::indexed) {
        palette.resize(768);
        if (length < palette.size())
            throw UnreadableImage();
        source.read(palette.data(), palette.size());
    }
    source.moveTo(next);
    return palette;
}

/// The colour profile among the resources; empty when there is none.
Bytes readProfile(Source& source) {
    const auto length = source.number<std::uint32_t>();
    const auto end = source.position() + length;
    Bytes profile;
    while (profile.empty() && source.position() + 12 <= end) {
        source.number<std::uint32_t>(); // "8BIM"
        const auto identifier = source.number<std::uint16_t>();
        const auto nameLength = source.number<std::uint8_t>();
        source.moveTo(source.position() + nameLength + (nameLength % 2 == 0 ? 1U : 0U));
        const auto size = source.number<std::uint32_t>();
        const auto next = source.position() + size + size % 2;
        if (identifier == profileResource && next <= end && size <= maximumProfile) {
            profile.resize(size);
            source.read(profile.data(), size);
        }
        source.moveTo(std::min(next, end));
    }
    source.moveTo(end);
    return profile;
}

/// Whether the first channel after the colours is the merged image's transparency: a negative number of layers says so.
bool readHasAlpha(Source& source, const Header& header) {
    const auto length = header.length(source);
    const auto position = source.position();
    bool hasAlpha = false;
    if (length >= 10) {
        const auto layerInfo = header.length(source);
        hasAlpha = layerInfo >= 2 && source.number<std::int16_t>() < 0;
    }
    if (length > static_cast<std::uint64_t>(INT64_MAX) - position)
        throw UnreadableImage();
    source.moveTo(position + length);
    return hasAlpha && header.channels > colourChannels(header.mode);
}

void unpackRow(const Bytes& packed, Bytes& row) {
    size_t at = 0;
    size_t out = 0;
    while (out < row.size()) {
        if (at + 1 >= packed.size())
            throw UnreadableImage();
        const int code = static_cast<std::int8_t>(packed[at++]);
        if (code == -128)
            continue;
        if (code >= 0) {
            const size_t count = std::min(static_cast<size_t>(code) + 1, row.size() - out);
            if (count > packed.size() - at)
                throw UnreadableImage();
            std::copy_n(packed.begin() + static_cast<std::ptrdiff_t>(at), count,
                        row.begin() + static_cast<std::ptrdiff_t>(out));
            at += static_cast<size_t>(code) + 1;
            out += count;
        } else {
            const size_t count = std::min(static_cast<size_t>(1 - code), row.size() - out);
            std::fill_n(row.begin() + static_cast<std::ptrdiff_t>(out), count, packed[at++]);
            out += count;
        }
    }
}

/// The rows of the first channels, in the order of the file, which is long enough to hold them.
class Rows {
public:
    Rows(Source& source, const Header& header, unsigned channels) : source_(source) {
        const auto coding = static_cast<Coding>(source.number<std::uint16_t>());
        const std::uint64_t count = std::uint64_t{channels} * header.height;
        if (coding == Coding::runLength)
            readLengths(header, count);
        else if (coding == Coding::plain)
            source.requireMore(count * header.rowBytes());
        else
            throw UnreadableImage();
        row_.resize(header.rowBytes());
    }
    const Bytes& next() {
        if (lengths_.empty()) {
            source_.read(row_.data(), row_.size());
            return row_;
        }
        packed_.resize(lengths_[next_++]);
        source_.read(packed_.data(), packed_.size());
        unpackRow(packed_, row_);
        return row_;
    }

private:
    void readLengths(const Header& header, std::uint64_t count) {
        const std::uint64_t lengthBytes = header.isLarge ? 4 : 2;
        const std::uint64_t rowBytes = header.rowBytes();
        const auto table = source_.position();
        const std::uint64_t tableBytes = std::uint64_t{header.channels} * header.height * lengthBytes;
        source_.requireMore(tableBytes);
        lengths_.resize(count);
        std::uint64_t total = 0;
        for (auto& length : lengths_) {
            length = header.isLarge ? source_.number<std::uint32_t>() : source_.number<std::uint16_t>();
            // Two bytes stand for 128 at most.
            if (length < rowBytes / 64 || length > 2 * rowBytes + 16)
                throw UnreadableImage();
            total += length;
        }
        source_.moveTo(table + tableBytes);
        source_.requireMore(total);
    }

    Source& source_;
    Bytes row_;
    Bytes packed_;
    std::vector<std::uint32_t> lengths_;
    size_t next_ = 0;
};

/// One sample of a row as 8 bits. Samples of 32 bits are linear light.
unsigned char sampleAt(const Bytes& row, size_t x, unsigned depth) {
    switch (depth) {
    case 1:
        return (row[x / 8] >> (7 - x % 8) & 1) != 0 ? 0 : 255; // a set bit is ink
    case 16:
        return row[2 * x];
    case 32: {
        const auto bits = std::uint32_t{row[4 * x]} << 24 | std::uint32_t{row[4 * x + 1]} << 16 |
                          std::uint32_t{row[4 * x + 2]} << 8 | row[4 * x + 3];
        const float light = std::bit_cast<float>(bits);
        if (!(light > 0))
            return 0;
        return static_cast<unsigned char>(std::lround(255.0F * std::pow(std::min(light, 1.0F), 1 / 2.2F)));
    }
    default:
        return row[x];
    }
}

Bytes readSamples(Source& source, const Header& header, unsigned bands) {
    Rows rows(source, header, bands);
    Bytes samples(size_t{header.width} * header.height * bands);
    for (unsigned channel = 0; channel < bands; ++channel)
        for (size_t y = 0; y < header.height; ++y) {
            const Bytes& row = rows.next();
            unsigned char* out = samples.data() + y * header.width * bands + channel;
            for (size_t x = 0; x < header.width; ++x, out += bands)
                *out = sampleAt(row, x, header.depth);
        }
    return samples;
}

/// Colours through a palette of three planes.
Bytes coloured(const Bytes& indices, const Bytes& palette) {
    Bytes samples;
    samples.reserve(indices.size() * 3);
    for (const unsigned char index : indices)
        for (const size_t plane : {0U, 256U, 512U})
            samples.push_back(palette[plane + index]);
    return samples;
}

/// Inks are stored inverted: 255 is none. `bands` is 4, or 5 with alpha.
Bytes withoutInk(Bytes samples, unsigned bands) {
    size_t out = 0;
    for (size_t at = 0; at < samples.size(); at += bands) {
        const unsigned black = samples[at + 3];
        const unsigned char alpha = samples[at + bands - 1];
        for (size_t ink = 0; ink < 3; ++ink)
            samples[out++] = static_cast<unsigned char>(samples[at + ink] * black / 255);
        if (bands == 5)
            samples[out++] = alpha;
    }
    samples.resize(out);
    return samples;
}

/// Stored as 0 to 255 for lightness 0 to 100, and as 128 plus a and b.
void convertFromLab(Image& image) {
    const std::array<double, 3> scale{100.0 / 255, 1, 1};
    const std::array<double, 3> offset{0, -128, -128};
    VipsImage* next = nullptr;
    if (vips_extract_band(image.pixels.get(), &next, 0, "n", 3, nullptr) != 0)
        throw UnreadableImage();
    const VipsImageRef colours(next);
    if (vips_linear(colours.get(), &next, scale.data(), offset.data(), 3, nullptr) != 0)
        throw UnreadableImage();
    const VipsImageRef lab(next);
    if (vips_copy(lab.get(), &next, "interpretation", VIPS_INTERPRETATION_LAB, nullptr) != 0)
        throw UnreadableImage();
    image.pixels.reset(next);
}

} // namespace

Image readPsd(const std::string& path) {
    Source source(path);
    const Header header = readHeader(source);
    const Bytes palette = readPalette(source, header.mode);
    const Bytes profile = readProfile(source);
    const bool hasAlpha = readHasAlpha(source, header);
    unsigned bands = colourChannels(header.mode) + (hasAlpha && header.mode != Mode::indexed ? 1U : 0U);
    Bytes samples = readSamples(source, header, bands);
    if (header.mode == Mode::indexed) {
        samples = coloured(samples, palette);
        bands = 3;
    } else if (header.mode == Mode::cmyk) {
        samples = withoutInk(std::move(samples), bands);
        --bands;
    }
    Image image = imageOver(std::make_shared<const Bytes>(std::move(samples)), static_cast<int>(header.width),
                            static_cast<int>(header.height), static_cast<int>(bands));
    if (header.mode == Mode::lab)
        convertFromLab(image);
    else if (header.mode != Mode::cmyk && !profile.empty())
        vips_image_set_blob_copy(image.pixels.get(), VIPS_META_ICC_NAME, profile.data(), profile.size());
    return image;
}

} // namespace quillmere::images
