// With the real LibreOffice and ffmpeg.

#include "base/Errors.h"
#include "platform/common/NullMediaExporter.h"
#include "platform/common/WorkerImageCodec.h"
#include "prepare/FilePreparation.h"
#include "tests/platform/common/Processes.h"
#include "tests/platform/common/Sandbox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillmere {
namespace {

using tests::Sandbox;

constexpr const char* words = R"(<?xml version="1.0" encoding="UTF-8"?>
<office:document xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
 xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0"
 office:mimetype="application/vnd.oasis.opendocument.text" office:version="1.2">
<office:body><office:text><text:p>Grüße from a document</text:p></office:text></office:body></office:document>)";

constexpr const char* slides = R"(<?xml version="1.0" encoding="UTF-8"?>
<office:document xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
 xmlns:draw="urn:oasis:names:tc:opendocument:xmlns:drawing:1.0"
 xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0"
 xmlns:svg="urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0"
 office:mimetype="application/vnd.oasis.opendocument.presentation" office:version="1.2">
<office:body><office:presentation><draw:page draw:name="One"><draw:frame svg:width="10cm" svg:height="3cm">
<draw:text-box><text:p>A slide</text:p></draw:text-box></draw:frame></draw:page></office:presentation></office:body>
</office:document>)";

class ConvertersTest : public testing::Test {
protected:
    PreparedFile prepare(const FileUrl& file) { return preparation.prepare(file, cache); }

    /// Runs a converter as a user would, to make a file to convert.
    void make(const std::optional<FileUrl>& program, std::vector<std::string> arguments) {
        ASSERT_TRUE(program.has_value());
        const std::vector<std::string> environment{"PATH=/usr/bin:/bin", "HOME=" + sandbox.url().path(),
                                                   "LANG=C.UTF-8"};
        platform::ChildProcess child(
            {.executable = *program, .arguments = std::move(arguments), .environment = environment});
        ASSERT_TRUE(child.wait().isSuccess());
    }
    void expectNothingLeft(size_t results) {
        EXPECT_EQ(std::filesystem::exists(cache.filesystemPath()) ? sandbox.names("cache").size() : 0, results);
        EXPECT_TRUE(tests::eventually([&] { return tests::processesNaming(sandbox.url().path()) == 0; }));
    }

    Sandbox sandbox;
    FileUrl cache = sandbox.at("cache");
    platform::Confinement confinement;
    platform::WorkerImageCodec images{FileUrl(IMAGE_WORKER), confinement};
    platform::NullMediaExporter exporter;
    const FilePreparation preparation{{.images = images, .exporter = exporter, .confinement = confinement}};
};

TEST_F(ConvertersTest, OfficeDocumentsBecomePdf) {
    const struct {
        const char* ext;
        const char* kind;
        const char* source; // what LibreOffice makes it from; none: it is written as it is
    } rows[] = {
        {"rtf", "pages", nullptr},         {"fodt", "pages", nullptr},       {"docx", "pages", "source.fodt"},
        {"odt", "pages", "source.fodt"},   {"doc", "pages", "source.fodt"},  {"fodp", "slides", nullptr},
        {"pptx", "slides", "source.fodp"}, {"odp", "slides", "source.fodp"},
    };
    sandbox.write("source.fodt", words);
    sandbox.write("source.fodp", slides);
    sandbox.write("made.rtf", R"({\rtf1\ansi A letter\par})");
    sandbox.write("made.fodt", words);
    sandbox.write("made.fodp", slides);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.ext);
        if (row.source) {
            make(preparation.libreOffice(),
                 {"-env:UserInstallation=" + sandbox.at("profile").uri(), "--headless", "--convert-to", row.ext,
                  "--outdir", sandbox.url().path(), sandbox.at(row.source).path()});
            std::filesystem::rename(sandbox.at(std::string("source.") + row.ext).path(),
                                    sandbox.at(std::string("made.") + row.ext).path());
        }
        const PreparedFile prepared = prepare(sandbox.at(std::string("made.") + row.ext));
        EXPECT_EQ(prepared.ext, "pdf");
        EXPECT_EQ(prepared.kind, row.kind);
        EXPECT_TRUE(Sandbox::read(prepared.file).starts_with("%PDF-"));
    }
    expectNothingLeft(std::size(rows));
}

TEST_F(ConvertersTest, AnyNameAndNoDocument) {
    const FileUrl odd = sandbox.write("-- 100% \xff \xf0\x9f\x8e\xac.rtf", R"({\rtf1\ansi A letter\par})");
    EXPECT_EQ(prepare(odd).ext, "pdf");
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
        if (std::string_view(row.ext) == "m4a")
            make(preparation.ffmpeg(), {"-v", "error", "-f", "lavfi", "-i", "sine", "-t", "1", file.path()});
        else
            make(preparation.ffmpeg(),
                 {"-v", "error", "-f", "lavfi", "-i", "testsrc=size=64x48:rate=25", "-t", "1", file.path()});
        const PreparedFile prepared = prepare(file);
        EXPECT_EQ(prepared.ext, row.ext);
        EXPECT_EQ(Sandbox::read(prepared.file).substr(4, 4), "ftyp");
    }
    expectNothingLeft(std::size(rows));
}

TEST_F(ConvertersTest, PlaylistsUnderAFilmsNameLeadNowhere) {
    make(preparation.ffmpeg(),
         {"-v", "error", "-f", "lavfi", "-i", "sine", "-t", "1", sandbox.at("secret.wav").path()});
    const std::string secret = sandbox.at("secret.wav").path();
    const std::string rows[] = {
        "ffconcat version 1.0\nfile secret.wav\n",
        "ffconcat version 1.0\nfile '" + secret + "'\n",
        "#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\nsecret.wav\n#EXT-X-ENDLIST\n",
        "#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\nhttp://127.0.0.1:1/a.ts\n#EXT-X-ENDLIST\n",
        "plain text",
        "",
    };
    const platform::Confinement limited(platform::Confinement::Mode::limitsOnly);
    const FilePreparation unwalled({.images = images, .exporter = exporter, .confinement = limited});
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
