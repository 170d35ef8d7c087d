#include "helpers/image-worker/OldIcon.h"

#include <gtest/gtest.h>
#include <string>

namespace quillmere::images {
namespace {

using namespace std::string_literals;

std::string repeated(const std::string& piece, size_t count) {
    std::string bytes;
    for (size_t i = 0; i < count; ++i)
        bytes += piece;
    return bytes;
}

/// Red: runs of 128 bytes for each colour.
std::string redRuns(size_t pixels) {
    std::string coded;
    for (const char value : {'\xff', '\0', '\0'})
        coded += repeated("\xfd"s + value, pixels / 128);
    return coded;
}

/// The side, then the third pixel as red, green, blue and alpha; nothing without an image.
std::string described(const std::vector<IconMember>& members) {
    const auto image = oldIcon(members);
    if (!image)
        return "";
    std::string text = std::to_string(image->pixels->Ysize);
    const auto* pixel = static_cast<const unsigned char*>(vips_image_get_data(image->pixels.get())) + 2 * 4;
    for (int band = 0; band < 4; ++band)
        text += " " + std::to_string(pixel[band]);
    return text;
}

TEST(OldIcon, TakesTheBestWholeFormWithItsMask) {
    ASSERT_EQ(vips_init("test"), 0);
    const std::string red = redRuns(256);
    const std::string plainBlue = repeated("\0\0\0\xff"s, 256);
    const std::string thirdPixelBlack = "\x20"s + std::string(127, '\0');
    const std::string thirdPixelShown = thirdPixelBlack + thirdPixelBlack;
    const std::string half(256, '\x80');
    const struct {
        const char* name;
        std::vector<std::pair<std::string, std::string>> members;
        std::string result;
    } rows[] = {
        {"none", {}, ""},
        {"runs", {{"is32", red}, {"s8mk", half}}, "16 255 0 0 128"},
        {"no mask", {{"is32", red}}, "16 255 0 0 255"},
        {"short mask", {{"is32", red}, {"s8mk", half.substr(0, 9)}}, "16 255 0 0 255"},
        {"plain", {{"is32", plainBlue}}, "16 0 0 255 255"},
        {"largest", {{"is32", red}, {"it32", std::string(4, '\0') + redRuns(16384)}}, "128 255 0 0 255"},
        {"broken off", {{"il32", redRuns(1024).substr(0, 40)}, {"is32", red}}, "16 255 0 0 255"},
        {"code without bytes", {{"is32", redRuns(256).substr(0, 11)}}, ""},
        {"run too long", {{"is32", "\xff\xff\xff\xff" + red}}, ""},
        {"literals too few", {{"is32", "\x7f" + red.substr(0, 8)}}, ""},
        {"palette", {{"ics8", std::string(256, 35)}}, "16 255 0 0 255"},
        {"palette, grey", {{"ics8", std::string(256, '\xf5')}}, "16 238 238 238 255"},
        {"palette, green", {{"ics8", std::string(256, '\xea')}}, "16 0 17 0 255"},
        {"palette, simple mask", {{"icl8", std::string(1024, '\xff')}, {"ICN#", thirdPixelShown}}, "32 0 0 0 255"},
        {"two colours", {{"ICN#", thirdPixelBlack + std::string(128, '\0')}}, "32 0 0 0 0"},
        {"two colours without mask", {{"ICN#", thirdPixelBlack}}, "32 0 0 0 255"},
        {"short palette", {{"ics8", std::string(255, '\0')}}, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<IconMember> members;
        for (const auto& [type, contents] : row.members)
            members.push_back({.type = type, .contents = contents});
        EXPECT_EQ(described(members), row.result);
    }
}

} // namespace
} // namespace quillmere::images
