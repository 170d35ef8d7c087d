#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace quillmere::tests {

/// Pictures of 60 x 40 pixels, the upper left quarter red, the rest blue, byte by byte where no library writes the
/// format.

struct PsdSpec {
    int mode = 3; // 1 grey, 2 indexed, 3 RGB, 4 CMYK, 9 Lab
    int depth = 8;
    bool isRunLength = false;
    bool isLarge = false;
    bool hasAlpha = false;
    std::uint32_t width = 60;
    std::uint32_t height = 40;
};
std::string psd(const PsdSpec& spec);

/// An icon file with these members: four letters and the contents.
std::string icns(const std::vector<std::pair<std::string, std::string>>& members);

/// A linear camera file of a red, green, blue mosaic, evenly lit. `orientation` as in TIFF.
std::string dng(int width, int height, int orientation);

/// A TIFF header that claims this size over one short strip.
std::string claimingTiff(std::uint32_t width, std::uint32_t height);

} // namespace quillmere::tests
