#include "tests/prepare/ImageFixtures.h"

#include <array>
#include <bit>
#include <tuple>
#include <utility>

namespace quillmere::tests {

namespace {

std::string bigEndian(std::uint64_t value, int bytes) {
    std::string text;
    for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8)
        text += static_cast<char>(value >> shift & 0xff);
    return text;
}

std::string littleEndian(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> (8 * i) & 0xff);
    return text;
}

/// What the channel holds for red and for blue, from 0 to 255.
std::pair<int, int> redAndBlue(int mode, int channel) {
    constexpr std::array<std::pair<int, int>, 4> rgb{{{255, 0}, {0, 0}, {0, 255}, {255, 255}}};
    constexpr std::array<std::pair<int, int>, 5> cmyk{{{255, 0}, {0, 0}, {0, 255}, {255, 255}, {255, 255}}};
    constexpr std::array<std::pair<int, int>, 4> lab{{{138, 75}, {209, 196}, {198, 16}, {255, 255}}};
    const auto index = static_cast<size_t>(channel);
    switch (mode) {
    case 4:
        return cmyk[index];
    case 9:
        return lab[index];
    case 3:
        return rgb[index];
    default:
        return channel == 0 ? std::pair{2, 1} : std::pair{255, 255}; // a palette's index; grey asks for its own
    }
}

std::string sample(int value, int depth) {
    switch (depth) {
    case 16:
        return bigEndian(static_cast<std::uint64_t>(value) * 257, 2);
    case 32:
        return bigEndian(std::bit_cast<std::uint32_t>(value == 255 ? 1.0F : 0.0F), 4);
    default:
        return bigEndian(static_cast<std::uint64_t>(value), 1);
    }
}

/// Literal runs and repeats by turns, as encoders write them.
std::string packed(const std::string& row) {
    std::string text;
    for (size_t at = 0; at < row.size();) {
        size_t run = 1;
        while (at + run < row.size() && run < 128 && row[at + run] == row[at])
            ++run;
        if (run > 1)
            text += static_cast<char>(1 - static_cast<int>(run));
        else
            text += '\0';
        text += row[at];
        at += run;
    }
    return text + '\x80';
}

} // namespace

std::string psd(const PsdSpec& spec) {
    const int colours = spec.mode == 4 ? 4 : spec.mode < 3 ? 1 : 3;
    const int channels = colours + (spec.hasAlpha ? 1 : 0);
    std::string file = "8BPS" + bigEndian(spec.isLarge ? 2 : 1, 2) + std::string(6, '\0') +
                       bigEndian(static_cast<std::uint64_t>(channels), 2) + bigEndian(spec.height, 4) +
                       bigEndian(spec.width, 4) + bigEndian(static_cast<std::uint64_t>(spec.depth), 2) +
                       bigEndian(static_cast<std::uint64_t>(spec.mode), 2);
    std::string palette(spec.mode == 2 ? 768 : 0, '\0');
    if (spec.mode == 2)
        palette[2] = palette[512 + 1] = '\xff';
    file += bigEndian(palette.size(), 4) + palette;
    file += bigEndian(0, 4);
    const int lengthBytes = spec.isLarge ? 8 : 4;
    if (spec.hasAlpha)
        file += bigEndian(16, lengthBytes) + bigEndian(2, lengthBytes) + bigEndian(0xffff, 2) +
                std::string(14 - static_cast<size_t>(lengthBytes), '\0');
    else
        file += bigEndian(0, lengthBytes);
    file += bigEndian(spec.isRunLength ? 1 : 0, 2);
    std::string lengths;
    std::string rows;
    for (int channel = 0; channel < channels; ++channel) {
        auto [red, blue] = redAndBlue(spec.mode, channel);
        if (spec.mode == 1 && channel == 0)
            std::tie(red, blue) = std::pair{255, 0};
        for (std::uint32_t y = 0; y < 40; ++y) {
            std::string row;
            for (std::uint32_t x = 0; x < 60; ++x)
                row += sample(x < 30 && y < 20 ? red : blue, spec.depth);
            if (spec.isRunLength)
                row = packed(row);
            lengths += bigEndian(row.size(), spec.isLarge ? 4 : 2);
            rows += row;
        }
    }
    return file + (spec.isRunLength ? lengths : "") + rows;
}

std::string icns(const std::vector<std::pair<std::string, std::string>>& members) {
    std::string body;
    for (const auto& [type, contents] : members)
        body += type + bigEndian(contents.size() + 8, 4) + contents;
    return "icns" + bigEndian(body.size() + 8, 4) + body;
}

namespace {

struct Tag {
    int number;
    int type; // 1 byte, 2 text, 3 short, 4 long, 5 rational, 10 signed rational
    std::uint64_t count;
    std::string value;
};

std::string tiff(const std::vector<Tag>& tags, const std::string& pixels) {
    // Pixels first, at byte 8; values of more than four bytes follow the directory.
    const std::uint64_t directory = 8 + pixels.size();
    std::uint64_t outside = directory + 2 + tags.size() * 12 + 4;
    std::string entries = littleEndian(tags.size(), 2);
    std::string values;
    for (const auto& tag : tags) {
        entries += littleEndian(static_cast<std::uint64_t>(tag.number), 2) +
                   littleEndian(static_cast<std::uint64_t>(tag.type), 2) + littleEndian(tag.count, 4);
        if (tag.value.size() <= 4) {
            entries += tag.value + std::string(4 - tag.value.size(), '\0');
            continue;
        }
        entries += littleEndian(outside, 4);
        values += tag.value;
        outside += tag.value.size();
    }
    return "II*" + std::string(1, '\0') + littleEndian(directory, 4) + pixels + entries + littleEndian(0, 4) + values;
}

Tag shortTag(int number, int value) {
    return {number, 3, 1, littleEndian(static_cast<std::uint64_t>(value), 2)};
}
Tag longTag(int number, std::uint64_t value) {
    return {number, 4, 1, littleEndian(value, 4)};
}

} // namespace

std::string dng(int width, int height, int orientation) {
    std::string pixels;
    for (int i = 0; i < width * height; ++i)
        pixels += littleEndian(0x4000, 2);
    std::string matrix; // XYZ to linear sRGB
    for (const int entry : {32405, -15371, -4985, -9693, 18760, 416, 556, -2040, 10572})
        matrix += littleEndian(static_cast<std::uint32_t>(entry), 4) + littleEndian(10000, 4);
    std::string neutral;
    for (int i = 0; i < 3; ++i)
        neutral += littleEndian(1, 4) + littleEndian(1, 4);
    return tiff({longTag(254, 0),
                 longTag(256, static_cast<std::uint64_t>(width)),
                 longTag(257, static_cast<std::uint64_t>(height)),
                 shortTag(258, 16),
                 shortTag(259, 1),
                 shortTag(262, 32803),
                 {271, 2, 5, std::string("Test\0", 5)},
                 {272, 2, 5, std::string("Test\0", 5)},
                 longTag(273, 8),
                 shortTag(274, orientation),
                 shortTag(277, 1),
                 longTag(278, static_cast<std::uint64_t>(height)),
                 longTag(279, pixels.size()),
                 shortTag(284, 1),
                 {33421, 3, 2, littleEndian(2, 2) + littleEndian(2, 2)},
                 {33422, 1, 4, std::string("\0\1\1\2", 4)},
                 {50706, 1, 4, std::string("\1\4\0\0", 4)},
                 {50708, 2, 5, std::string("Test\0", 5)},
                 longTag(50717, 65535),
                 {50721, 10, 9, matrix},
                 {50728, 5, 3, neutral},
                 shortTag(50778, 21)},
                pixels);
}

std::string claimingTiff(std::uint32_t width, std::uint32_t height) {
    return tiff({longTag(256, width), longTag(257, height), shortTag(258, 8), shortTag(259, 1), shortTag(262, 1),
                 longTag(273, 8), shortTag(277, 1), longTag(278, height), longTag(279, 64)},
                std::string(64, 'x'));
}

} // namespace quillmere::tests
