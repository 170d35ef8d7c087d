#include "prepare/ResultFormat.h"

#include "tests/platform/common/WholeFiles.h"
#include "tests/support/Sandbox.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

using tests::mediaAround;
using tests::pdfAround;
using tests::Sandbox;

TEST(ResultFormat, TellsWholeFilesFromParts) {
    const std::string pdf = pdfAround(std::string(5000, 'x'));
    const std::string media = mediaAround(std::string(5000, 'x'));
    const std::string xrefStream = "%PDF-1.5\n12 0 obj\n<<>>\nendobj\nstartxref\n9\n%%EOF";
    const std::string large = mediaAround("x").substr(0, 12) + std::string("\0\0\0\1mdat\0\0\0\0\0\0\0\x14....", 20) +
                              std::string("\0\0\0\0moov....", 12);
    const struct {
        const char* name;
        ResultFormat format;
        std::string contents;
        bool isWhole;
    } rows[] = {
        {"pdf", ResultFormat::pdf, pdf, true},
        {"pdf with a cross-reference stream", ResultFormat::pdf, xrefStream, true},
        {"pdf without its last line", ResultFormat::pdf, pdf.substr(0, pdf.size() - 6), false},
        {"pdf without its trailer", ResultFormat::pdf, pdf.substr(0, 3000), false},
        {"pdf that misses a block in its middle", ResultFormat::pdf, pdf.substr(0, 500) + pdf.substr(4596), false},
        {"trailer alone", ResultFormat::pdf, "startxref\n0\n%%EOF\n", false},
        {"no number", ResultFormat::pdf, "%PDF-1.4\nstartxref\n", false},
        {"number past all bounds", ResultFormat::pdf, "%PDF-1.4\nstartxref\n99999999999999999999999\n%%EOF\n", false},
        {"film", ResultFormat::mp4, media, true},
        {"sound", ResultFormat::m4a, media, true},
        {"large boxes, and one up to the end", ResultFormat::mp4, large, true},
        {"film without its index", ResultFormat::mp4, media.substr(0, media.size() - 8), false},
        {"film cut in its index", ResultFormat::mp4, media.substr(0, media.size() - 3), false},
        {"film cut in its data", ResultFormat::mp4, media.substr(0, 1000), false},
        {"box without a length", ResultFormat::mp4, media + std::string("\0\0\0\3free", 8), false},
        {"nothing but the first box", ResultFormat::mp4, media.substr(0, 12), false},
    };
    const Sandbox sandbox;
    for (const auto& row : rows)
        EXPECT_EQ(isWhole(RegularFile(sandbox.write("file", row.contents)), row.format), row.isWhole) << row.name;
    for (const auto format : {ResultFormat::pdf, ResultFormat::mp4})
        EXPECT_FALSE(isWhole(RegularFile(sandbox.write("file", "")), format));
}

} // namespace
} // namespace quillmere
