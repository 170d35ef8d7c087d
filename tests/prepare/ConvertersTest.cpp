// With the real LibreOffice and ffmpeg.

#include "base/Errors.h"
#include "platform/common/NullMediaExporter.h"
#include "platform/common/WorkerImageCodec.h"
#include "prepare/FilePreparation.h"
#include "tests/platform/common/Processes.h"
#include "tests/support/Sandbox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillmere {
namespace {

using tests::Sandbox;

class ConvertersTest : public testing::Test {
protected:
    PreparedFile prepare(const FileUrl& file) { return preparation.prepare(file, cache); }

    /// Has ffmpeg make a second of this source, as a user would.
    void make(const FileUrl& file, const std::string& source) {
        platform::ChildProcess child({.executable = preparation.ffmpeg().value(),
                                      .arguments = {"-v", "error", "-f", "lavfi", "-i", source, "-t", "1", file.path()},
                                      .environment = {{"PATH=/usr/bin:/bin"}}});
        ASSERT_TRUE(child.wait().isSuccess());
    }
    void expectNothingLeft(size_t results) {
        EXPECT_EQ(std::filesystem::exists(cache.filesystemPath()) ? sandbox.names("cache").size() : 0, results);
        EXPECT_TRUE(tests::eventually([&] { return tests::processesNaming(sandbox.root().path()) == 0; }));
    }

    Sandbox sandbox;
    FileUrl cache = sandbox.at("cache");
    platform::Confinement confinement;
    platform::WorkerImageCodec images{FileUrl(IMAGE_WORKER), confinement};
    platform::NullMediaExporter exporter;
    platform::Confinement limited{platform::Confinement::Mode::withoutWall};
    const FilePreparation preparation{{.images = images, .exporter = exporter, .confinement = confinement}};
    const FilePreparation unwalled{{.images = images, .exporter = exporter, .confinement = limited}};
};

TEST_F(ConvertersTest, AnyNameAndNoDocument) {
    const FileUrl odd = sandbox.write("-- 100% \xff \xf0\x9f\x8e\xac.rtf", R"({\rtf1\ansi A letter\par})");
    EXPECT_TRUE(Sandbox::read(prepare(odd).file).starts_with("%PDF-"));
    std::filesystem::remove_all(cache.filesystemPath());
    EXPECT_TRUE(Sandbox::read(unwalled.prepare(odd, cache).file).starts_with("%PDF-"));
    const FileUrl broken = sandbox.write("broken.docx", std::string("PK\3\4") + std::string(100, '\xff'));
    EXPECT_EQ(prepare(broken), (PreparedFile{broken, "docx"}));
    expectNothingLeft(1);
}

TEST_F(ConvertersTest, LegacyMediaBecomeMpeg4) {
    const struct {
        const char* name;
        const char* ext;
    } rows[] = {{"film.avi", "mp4"},   {"film.wmv", "mp4"}, {"film.flv", "mp4"}, {"film.ts", "mp4"},
                {"- 100%.mpg", "mp4"}, {"song.wma", "m4a"}, {"song.ac3", "m4a"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const FileUrl file = sandbox.at(row.name);
        make(file, std::string_view(row.ext) == "m4a" ? "sine" : "testsrc=size=64x48:rate=25");
        const PreparedFile prepared = prepare(file);
        EXPECT_EQ(prepared.ext, row.ext);
        EXPECT_EQ(Sandbox::read(prepared.file).substr(4, 4), "ftyp");
    }
    expectNothingLeft(std::size(rows));
}

TEST_F(ConvertersTest, PlaylistsUnderAFilmsNameLeadNowhere) {
    make(sandbox.at("secret.wav"), "sine");
    const std::string secret = sandbox.at("secret.wav").path();
    const std::string rows[] = {
        "ffconcat version 1.0\nfile secret.wav\n",
        "ffconcat version 1.0\nfile '" + secret + "'\n",
        "#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\nsecret.wav\n#EXT-X-ENDLIST\n",
        "#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\nhttp://127.0.0.1:1/a.ts\n#EXT-X-ENDLIST\n",
        "plain text",
        "",
    };
    for (const auto& contents : rows) {
        SCOPED_TRACE(contents);
        const FileUrl film = sandbox.write("film.avi", contents);
        for (const FilePreparation* prepared : {&preparation, &unwalled})
            EXPECT_THROW(prepared->transcode(film, cache, MediaKind::audio), FileFailure);
        EXPECT_EQ(prepare(film), (PreparedFile{film, "avi"}));
    }
    expectNothingLeft(0);
}

} // namespace
} // namespace quillmere
