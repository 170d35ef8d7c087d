#include "platform/common/WorkerImageCodec.h"
#include "tests/platform/common/Processes.h"
#include "tests/platform/common/Sandbox.h"
#include "tests/prepare/ImageFixtures.h"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <ostream>
#include <vips/vips.h>

#if defined(__SANITIZE_ADDRESS__)
/// The encoder with which the test makes its pictures keeps some memory to the end.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libx265";
}
#endif

namespace quillmere {

namespace platform {
void PrintTo(ImageOutcome outcome, std::ostream* stream) {
    *stream << (outcome == ImageOutcome::written      ? "written"
                : outcome == ImageOutcome::unreadable ? "unreadable"
                                                      : "writeFailed");
}
} // namespace platform

namespace {

using platform::ImageOutcome;
using tests::Sandbox;

struct Unref {
    void operator()(VipsImage* image) const { g_object_unref(image); }
};
using Picture = std::unique_ptr<VipsImage, Unref>;

enum class Colour { red, blue, white, black, other };

void PrintTo(Colour colour, std::ostream* stream) {
    constexpr const char* names[]{"red", "blue", "white", "black", "other"};
    *stream << names[static_cast<int>(colour)];
}

/// 60 x 40 pixels, the upper left quarter red, the rest blue.
Picture testPicture() {
    VipsImage* black = nullptr;
    vips_black(&black, 60, 40, "bands", 3, nullptr);
    const Picture owner(black);
    VipsImage* picture = nullptr;
    const std::array<double, 3> one{1, 1, 1};
    const std::array<double, 3> blue{0, 0, 255};
    vips_linear(black, &picture, one.data(), blue.data(), 3, "uchar", TRUE, nullptr);
    const Picture lazy(picture);
    VipsImage* memory = vips_image_copy_memory(picture);
    vips_draw_rect(memory, std::array<double, 3>{255, 0, 0}.data(), 3, 0, 0, 30, 20, "fill", TRUE, nullptr);
    memory->Type = VIPS_INTERPRETATION_sRGB;
    return Picture(memory);
}

Picture open(const FileUrl& file) {
    return Picture(vips_image_new_from_file(file.path().c_str(), nullptr));
}

Colour colourAt(const Picture& picture, int x, int y) {
    double* values = nullptr;
    int count = 0;
    if (vips_getpoint(picture.get(), &values, &count, x, y, nullptr) != 0)
        return Colour::other;
    const std::unique_ptr<double, decltype(&g_free)> owner(values, g_free);
    const auto is = [&](double r, double g, double b) {
        const double green = count < 3 ? values[0] : values[1];
        const double last = count < 3 ? values[0] : values[2];
        return std::abs(values[0] - r) < 40 && std::abs(green - g) < 40 && std::abs(last - b) < 40;
    };
    return is(255, 0, 0)       ? Colour::red
           : is(0, 0, 255)     ? Colour::blue
           : is(255, 255, 255) ? Colour::white
           : is(0, 0, 0)       ? Colour::black
                               : Colour::other;
}

class ImageWorkerTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        vips_init("test");
        vips_cache_set_max(0); // the same names are read again and again
    }

    ImageOutcome convert(const FileUrl& file, int maxSide = 8192) {
        std::filesystem::create_directories(output.parent().filesystemPath());
        return codec.writeThumbnail(file, output, maxSide);
    }
    template <typename... Options>
    std::optional<FileUrl> saved(const std::string& name, VipsImage* picture, Options... options) {
        const FileUrl file = sandbox.at(name);
        if (vips_image_write_to_file(picture, file.path().c_str(), options..., nullptr) != 0)
            return std::nullopt;
        return file;
    }

    Sandbox sandbox;
    FileUrl output = sandbox.at("out/image.png");
    platform::Confinement confinement;
    platform::WorkerImageCodec codec{FileUrl(IMAGE_WORKER), confinement};
};

TEST_F(ImageWorkerTest, DecodesWhatLibrariesWrite) {
    const Picture picture = testPicture();
    const struct {
        const char* name;
        const char* options;
    } rows[] = {{"plain.tif", "[compression=none]"},
                {"lzw.TIFF", "[compression=lzw]"},
                {"tiles.tif", "[tile,pyramid]"},
                {"photo.heic", "[Q=90]"},
                {"photo.heif", "[Q=90]"},
                {"photo.jp2", "[lossless]"},
                {"photo.j2k", "[lossless]"},
                {"misnamed.heic", nullptr}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const FileUrl file = sandbox.at(row.name);
        const std::string target = row.options ? file.path() + row.options : sandbox.at("really.jpg").path() + "[Q=95]";
        ASSERT_EQ(vips_image_write_to_file(picture.get(), target.c_str(), nullptr), 0) << vips_error_buffer();
        if (!row.options)
            std::filesystem::rename(sandbox.at("really.jpg").path(), file.path());
        ASSERT_EQ(convert(file), ImageOutcome::written);
        const Picture result = open(output);
        EXPECT_EQ(result->Xsize, 60);
        EXPECT_EQ(result->Ysize, 40);
        EXPECT_EQ(colourAt(result, 10, 10), Colour::red);
        EXPECT_EQ(colourAt(result, 50, 10), Colour::blue);
        EXPECT_EQ(colourAt(result, 10, 30), Colour::blue);
    }
    EXPECT_EQ(sandbox.names("out"), std::vector<std::string>{"image.png"});
}

TEST_F(ImageWorkerTest, DecodesLayeredDocuments) {
    using tests::PsdSpec;
    const struct {
        const char* name;
        PsdSpec spec;
        int bands;
        Colour corner = Colour::red;
        Colour rest = Colour::blue;
    } rows[] = {
        {"plain", {}, 3},
        {"run-length coded", {.isRunLength = true}, 3},
        {"version 2", {.isRunLength = true, .isLarge = true}, 3},
        {"16 bits", {.depth = 16, .isRunLength = true}, 3},
        {"32 bits", {.depth = 32}, 3},
        {"grey", {.mode = 1}, 1, Colour::white, Colour::black},
        {"indexed", {.mode = 2}, 3},
        {"inks", {.mode = 4, .isRunLength = true}, 3},
        {"Lab", {.mode = 9}, 3},
        {"with alpha", {.hasAlpha = true}, 4},
        {"version 2 inks with alpha", {.mode = 4, .isLarge = true, .hasAlpha = true}, 4},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_EQ(convert(sandbox.write("picture.psd", tests::psd(row.spec))), ImageOutcome::written);
        const Picture result = open(output);
        EXPECT_EQ(result->Bands, row.bands);
        EXPECT_EQ(colourAt(result, 29, 19), row.corner);
        EXPECT_EQ(colourAt(result, 30, 19), row.rest);
        EXPECT_EQ(colourAt(result, 29, 20), row.rest);
    }
}

TEST_F(ImageWorkerTest, DecodesTheLargestMemberOfAnIcon) {
    const auto png = [&](int side) {
        VipsImage* black = nullptr;
        vips_black(&black, side, side, "bands", 3, nullptr);
        const Picture owner(black);
        vips_image_write_to_file(black, sandbox.at("member.png").path().c_str(), nullptr);
        return Sandbox::read(sandbox.at("member.png"));
    };
    // 16 x 16 in the old form: runs of 130 bytes for each colour.
    std::string old;
    for (const char value : {'\xff', '\0', '\0'})
        old += std::string("\xff", 1) + value + std::string("\xfb", 1) + value;
    const std::string mask(256, '\xff');
    const struct {
        const char* name;
        std::string contents;
        int side;
    } rows[] = {
        {"two sizes", tests::icns({{"ic07", png(128)}, {"ic08", png(256)}}), 256},
        {"one size broken", tests::icns({{"ic07", png(128)}, {"ic08", png(256).substr(0, 20)}}), 128},
        {"old form", tests::icns({{"is32", old}, {"s8mk", mask}}), 16},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_EQ(convert(sandbox.write("icon.icns", row.contents)), ImageOutcome::written);
        EXPECT_EQ(open(output)->Xsize, row.side);
    }
    EXPECT_EQ(colourAt(open(output), 8, 8), Colour::red);
}

TEST_F(ImageWorkerTest, DevelopsCameraFilesUpright) {
    for (const auto& [orientation, width, height] : {std::tuple{1, 64, 48}, {6, 48, 64}}) {
        ASSERT_EQ(convert(sandbox.write("photo.dng", tests::dng(64, 48, orientation))), ImageOutcome::written);
        const Picture result = open(output);
        EXPECT_EQ(result->Xsize, width);
        EXPECT_EQ(result->Ysize, height);
        EXPECT_EQ(result->Bands, 3);
    }
}

TEST_F(ImageWorkerTest, TurnsUprightAndScalesDownOnly) {
    const Picture picture = testPicture();
    vips_image_set_int(picture.get(), VIPS_META_ORIENTATION, 6); // shown turned to the right
    const FileUrl turned = saved("turned.tif", picture.get()).value();
    const struct {
        int maxSide;
        int width;
        int height;
    } rows[] = {{8192, 40, 60}, {60, 40, 60}, {30, 20, 30}, {1, 1, 1}};
    for (const auto& row : rows) {
        ASSERT_EQ(convert(turned, row.maxSide), ImageOutcome::written);
        const Picture result = open(output);
        EXPECT_EQ(result->Xsize, row.width);
        EXPECT_EQ(result->Ysize, row.height);
        if (row.maxSide < 2)
            continue;
        EXPECT_EQ(colourAt(result, row.width - 2, 2), Colour::red);
        EXPECT_EQ(colourAt(result, 2, 2), Colour::blue);
    }
}

TEST_F(ImageWorkerTest, HostileFilesAreUnreadableAndLeaveNothing) {
    const Picture picture = testPicture();
    const auto cut = [&](const char* name) {
        const std::string whole = Sandbox::read(saved(name, picture.get()).value());
        return whole.substr(0, whole.size() / 2);
    };
    const std::string document = tests::psd({.isRunLength = true});
    const struct {
        const char* name;
        std::string contents;
    } rows[] = {
        {"missing letter.heic", ""},
        {"text.heic", "no image at all"},
        {"text.psd", "no image at all"},
        {"text.nef", "no image at all"},
        {"text.icns", "no image at all"},
        {"script.tif", "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>"},
        {"half.tif", cut("whole.tif")},
        {"half.jp2", cut("whole.jp2")},
        {"half.heic", cut("whole.heic")},
        {"half.psd", document.substr(0, document.size() / 2)},
        {"half.dng", tests::dng(64, 48, 1).substr(0, 3000)},
        {"claims.tif", tests::claimingTiff(100'000, 100'000)},
        {"claims much and holds little.tif", tests::claimingTiff(19'000, 19'000)},
        {"claims.psd", tests::psd({.width = 100'000, .height = 100'000})},
        {"claims much and holds little.psd", tests::psd({.isRunLength = true, .width = 19'000, .height = 19'000})},
        {"lengths.icns", "icns\xff\xff\xff\xff"
                         "ic07\xff\xff\xff\xff"},
        {"endless.icns", std::string("icns\0\0\0\x10"
                                     "ic07\0\0\0\0",
                                     16)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(convert(sandbox.write(row.name, row.contents)), ImageOutcome::unreadable);
    }
    EXPECT_EQ(convert(sandbox.at("missing.heic")), ImageOutcome::unreadable);
    EXPECT_THAT(sandbox.names("out"), testing::IsEmpty());
    EXPECT_TRUE(tests::eventually([&] { return tests::processesNaming(sandbox.url().path()) == 0; }));
}

TEST_F(ImageWorkerTest, FailedWritesAreTold) {
    const FileUrl file = saved("picture.tif", testPicture().get()).value();
    sandbox.write("blocked", "");
    EXPECT_EQ(codec.writeThumbnail(file, sandbox.at("blocked/image.png"), 100), ImageOutcome::writeFailed);
    platform::WorkerImageCodec missing(sandbox.at("no worker"), confinement);
    EXPECT_EQ(missing.writeThumbnail(file, output, 100), ImageOutcome::writeFailed);
    EXPECT_THAT(sandbox.names("out"), testing::IsEmpty());
    // A device that is always full.
    platform::ChildProcess worker(
        {.executable = FileUrl(IMAGE_WORKER), .arguments = {file.path(), "/dev/full", "100"}});
    EXPECT_EQ(worker.wait().code, static_cast<int>(platform::ImageWorkerExit::writeFailed));
}

} // namespace
} // namespace quillmere
