#include "platform/common/WorkerImageCodec.h"
#include "tests/platform/common/Processes.h"
#include "tests/support/Sandbox.h"

#include <gmock/gmock.h>
#include <memory>
#include <ostream>
#include <vips/vips.h>

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

/// One of the pictures beside this file; see there what they show.
FileUrl sample(const std::string& name) {
    return FileUrl(PICTURES).appending(name);
}

class ImageWorkerTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        vips_init("test");
        vips_cache_set_max(0); // the same names are read again and again
    }

    ImageOutcome convert(const FileUrl& file, int maxSide = 8192) {
        return codec.writeThumbnail(file, output, maxSide);
    }
    Picture result() const { return Picture(vips_image_new_from_file(output.path().c_str(), nullptr)); }

    Sandbox sandbox;
    FileUrl output = sandbox.folder("out").appending("image.png");
    platform::Confinement confinement;
    platform::WorkerImageCodec codec{FileUrl(IMAGE_WORKER), confinement};
};

TEST_F(ImageWorkerTest, DecodesEveryFormat) {
    const struct {
        const char* name;
        int bands = 3;
        Colour corner = Colour::red;
        Colour rest = Colour::blue;
    } rows[] = {
        {"plain.tif"},
        {"lzw.TIFF"},
        {"tiles.tif"},
        {"photo.heic"},
        {"photo.jp2"},
        {"photo.j2k"},
        {"misnamed.heic"},
        {"plain.psd"},
        {"run-length.psd"},
        {"version2.psd"},
        {"depth16.psd"},
        {"depth32.psd"},
        {"grey.psd", 1, Colour::white, Colour::black},
        {"indexed.psd"},
        {"cmyk.psd"},
        {"lab.psd"},
        {"alpha.psd", 4},
        {"version2-cmyk-alpha.psd", 4},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_EQ(convert(sample(row.name)), ImageOutcome::written);
        const Picture picture = result();
        EXPECT_EQ(picture->Xsize, 60);
        EXPECT_EQ(picture->Ysize, 40);
        EXPECT_EQ(picture->Bands, row.bands);
        const int blur = std::string_view(row.name).ends_with(".heic") ? 3 : 0;
        EXPECT_EQ(colourAt(picture, 29 - blur, 19 - blur), row.corner);
        EXPECT_EQ(colourAt(picture, 30 + blur, 19 - blur), row.rest);
        EXPECT_EQ(colourAt(picture, 29 - blur, 20 + blur), row.rest);
    }
    EXPECT_EQ(sandbox.names("out"), std::vector<std::string>{"image.png"});
}

/// A bitmap of 60 by 40 pixels with the usual quarter.
std::string bitmap() {
    std::string bytes("BM\x56\x1c\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x3c\0\0\0\x28\0\0\0\1\0\x18\0", 30);
    bytes.resize(54);
    for (int y = 39; y >= 0; --y)
        for (int x = 0; x < 60; ++x)
            bytes += x < 30 && y < 20 ? std::string("\0\0\xff", 3) : std::string("\xff\0\0", 3);
    return bytes;
}

TEST_F(ImageWorkerTest, TheContentsTellTheFormatWhateverTheName) {
    ASSERT_EQ(convert(sample("plain.tif")), ImageOutcome::written);
    const std::string png = Sandbox::read(output);
    const struct {
        const char* name;
        std::string contents;
    } rows[] = {
        {"png.raw", png},
        {"jpeg.nef", Sandbox::read(sample("misnamed.heic"))},
        {"tiff.raw", Sandbox::read(sample("plain.tif"))},
        {"tiff.dng", Sandbox::read(sample("lzw.TIFF"))},
        {"layers.arw", Sandbox::read(sample("plain.psd"))},
        {"heif.cr2", Sandbox::read(sample("photo.heic"))},
        {"bitmap.tif", bitmap()},
        {"bitmap.raw", bitmap()},
        {"png.icns", png},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove(output.filesystemPath());
        ASSERT_EQ(convert(sandbox.write(row.name, row.contents)), ImageOutcome::written);
        EXPECT_EQ(result()->Xsize, 60);
        EXPECT_EQ(colourAt(result(), 10, 10), Colour::red);
        EXPECT_EQ(colourAt(result(), 45, 30), Colour::blue);
    }
    EXPECT_EQ(convert(sandbox.write("half.tif", bitmap().substr(0, 4000))), ImageOutcome::unreadable);
    EXPECT_EQ(convert(sandbox.write("claims.tif", bitmap().replace(18, 8, "\0\0\0\x7f\0\0\0\x7f", 8))),
              ImageOutcome::unreadable);
}

TEST_F(ImageWorkerTest, TakesTheLargestMemberTurnsUprightAndScalesDownOnly) {
    const struct {
        const char* name;
        int maxSide;
        int width;
        int height;
    } rows[] = {
        {"two-sizes.icns", 8192, 256, 256}, {"one-broken.icns", 8192, 128, 128}, {"old-form.icns", 8192, 16, 16},
        {"upright.dng", 8192, 64, 48},      {"turned.dng", 8192, 48, 64},        {"turned.tif", 1, 1, 1},
        {"turned.tif", 8192, 40, 60},       {"turned.tif", 60, 40, 60},          {"turned.tif", 30, 20, 30},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_EQ(convert(sample(row.name), row.maxSide), ImageOutcome::written);
        EXPECT_EQ(result()->Xsize, row.width);
        EXPECT_EQ(result()->Ysize, row.height);
    }
    EXPECT_EQ(colourAt(result(), 18, 2), Colour::red);
    EXPECT_EQ(colourAt(result(), 2, 2), Colour::blue);
    convert(sample("old-form.icns"));
    EXPECT_EQ(colourAt(result(), 8, 8), Colour::red);
}

TEST_F(ImageWorkerTest, HostileFilesAreUnreadableAndLeaveNothing) {
    const auto half = [](const char* name) {
        const std::string whole = Sandbox::read(sample(name));
        return whole.substr(0, whole.size() / 2);
    };
    const auto claiming = [](const char* name, std::string_view bigEndianSide) {
        std::string document = Sandbox::read(sample(name));
        return document.replace(14, 4, bigEndianSide).replace(18, 4, bigEndianSide);
    };
    const struct {
        const char* name;
        std::string contents;
    } rows[] = {
        {"empty letter.heic", ""},
        {"text.heic", "no image at all"},
        {"text.psd", "no image at all"},
        {"text.nef", "no image at all"},
        {"text.icns", "no image at all"},
        {"script.tif", "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>"},
        {"half.tif", half("plain.tif")},
        {"half.jp2", half("photo.jp2")},
        {"half.heic", half("photo.heic")},
        {"half.psd", half("run-length.psd")},
        {"half.dng", half("upright.dng")},
        {"claims.tif", Sandbox::read(sample("claims.tif"))},
        {"claims much and holds little.tif", Sandbox::read(sample("claims-less.tif"))},
        {"claims.psd", claiming("plain.psd", std::string_view("\0\1\x86\xa0", 4))},
        {"claims much and holds little.psd", claiming("run-length.psd", std::string_view("\0\0\x4a\x38", 4))},
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
    EXPECT_TRUE(tests::eventually([&] { return tests::processesNaming(sandbox.root().path()) == 0; }));
}

TEST_F(ImageWorkerTest, FailedWritesAreTold) {
    const FileUrl file = sample("plain.tif");
    sandbox.write("blocked");
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
