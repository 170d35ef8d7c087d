#include "prepare/FilePreparation.h"

#include "base/Errors.h"
#include "base/Sha256.h"
#include "base/Text.h"
#include "base/Uuid.h"
#include "platform/headless/HeadlessServices.h"
#include "tests/platform/common/Processes.h"
#include "tests/platform/common/WholeFiles.h"
#include "tests/prepare/Fakes.h"
#include "tests/support/Sandbox.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <latch>
#include <span>
#include <sstream>
#include <sys/stat.h>
#include <thread>

namespace quillmere {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tests::DrivenExporter;
using tests::Sandbox;
using tests::textInside;

constexpr const char* timedOut = "File conversion timed out.";
constexpr const char* refused = "The file converter could not open this document.";
constexpr const char* noCodec =
    "This media codec is unavailable on this Mac. Optional FFmpeg support can open additional legacy codecs.";

/// Preparation with stand-ins for every converter. The stand-in obeys the words in the file that it is to convert, and
/// writes its arguments.
class FilePreparationTest : public testing::Test {
protected:
    FilePreparation preparation(const platform::Confinement& confinement) {
        return FilePreparation({.images = images,
                                .exporter = exporter,
                                .confinement = confinement,
                                .libreOfficeCandidates = libreOffice,
                                .ffmpegCandidates = ffmpeg,
                                .clock = [this] { return clock(); }});
    }
    PreparedFile prepare(const FileUrl& file) { return preparation(walled).prepare(file, cache); }

    /// The sentence with which the call fails.
    template <typename Call>
    static std::string failure(Call call) {
        try {
            call();
        } catch (const std::exception& error) {
            return userMessage(error);
        }
        return "no failure";
    }

    FileUrl result(const FileUrl& file, std::string_view ext) const {
        return cache.appending(FilePreparation::key(file) + "." + std::string(ext));
    }
    std::vector<std::string> cacheNames() const {
        return std::filesystem::exists(cache.filesystemPath()) ? sandbox.names(cache.lastPathComponent())
                                                               : std::vector<std::string>{};
    }

    Sandbox sandbox;
    FileUrl cache = sandbox.at("cache");
    platform::Confinement walled;
    platform::Confinement limited{platform::Confinement::Mode::withoutWall};
    platform::HeadlessImageCodec images;
    DrivenExporter exporter;
    tests::DrivenClock clock;
    std::vector<FileUrl> libreOffice{FileUrl(STAND_IN)};
    std::vector<FileUrl> ffmpeg{FileUrl(STAND_IN)};
};

TEST_F(FilePreparationTest, TheFirstRuleThatAppliesDecides) {
    const std::string stream = [] {
        std::string bytes(377, '\0');
        bytes[0] = bytes[188] = bytes[376] = 'G';
        return bytes;
    }();
    using Kind = std::optional<std::string>;
    const struct {
        const char* name;
        std::string contents;
        const char* ext;
        Kind kind;
        bool isConverted;
    } rows[] = {
        {"notes.txt", "plain", "txt", {}, false},
        {"no extension", "plain", "", {}, false},
        {"PHOTO.HEIC", "image", "png", {}, true},
        {"photo.jpeg", "image", "jpeg", {}, false},
        {"source.ts", "const a = 1;", "ts", "text", false},
        {"Stream.TS", stream, "ts", {}, false}, // the stand-in refuses it, and the failure stays silent
        {"letter.docx", "write", "pdf", "pages", true},
        {"talk.PPTX", "write", "pdf", "slides", true},
        {"broken.docx", "exit=0", "docx", {}, false}, // the converter made nothing
        {"film.avi", "write", "mp4", {}, true},
        {"song.wma", "write", "m4a", {}, true},
        {"song.mp3", "write", "mp3", {}, false},
        {"film.wmv", "exit=1", "wmv", {}, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const FileUrl file = sandbox.write(row.name, row.contents);
        const PreparedFile expected{row.isConverted ? result(file, row.ext) : file, row.ext, row.kind};
        EXPECT_EQ(prepare(file), expected);
    }
    EXPECT_EQ(images.lastMaxSide, 8192);
}

TEST_F(FilePreparationTest, EveryListedExtensionTakesItsRoad) {
    const struct {
        std::string list;
        const char* ext;
    } rows[] = {
        {"tif tiff heic heif jp2 j2k psd icns raw dng cr2 nef arw", "png"},
        {"doc docx docm dot dotx dotm rtf odt ott fodt wpd wps ppt pptx pptm pps ppsx ppsm pot potx potm odp otp fodp",
         "pdf"},
        {"wmv asf avi mpg mpeg mpe m1v m2v mts m2ts vob dv divx flv rm rmvb 3gp 3g2", "mp4"},
        {"wma ac3 eac3 amr awb 3ga", "m4a"},
    };
    exporter.end = DrivenExporter::End::completes;
    const auto prepared = preparation(limited);
    for (const auto& row : rows) {
        std::istringstream words(row.list);
        for (std::string ext; words >> ext;)
            EXPECT_EQ(prepared.prepare(sandbox.write("file." + ext, "write"), cache).ext, row.ext) << ext;
    }
}

TEST_F(FilePreparationTest, KeysFollowPathSizeAndTime) {
    const FileUrl file = sandbox.write("a b|%.docx", "1234567");
    const auto at = [&](time_t seconds, long nanoseconds) {
        const timespec times[2]{{0, 0}, {seconds, nanoseconds}};
        ::utimensat(AT_FDCWD, file.path().c_str(), times, 0);
        return FilePreparation::key(file);
    };
    EXPECT_EQ(at(1'700'000'000, 0), sha256Hex(file.path() + "|7|1700000000.0"));
    EXPECT_EQ(at(1'700'000'000, 500'000'000), sha256Hex(file.path() + "|7|1700000000.5"));
    EXPECT_EQ(FilePreparation::key(sandbox.at("missing")), sha256Hex(sandbox.at("missing").path() + "|0|0.0"));
}

TEST_F(FilePreparationTest, ResultsAreReusedUntilTheFileChanges) {
    const FileUrl file = sandbox.write("photo.heic", "one");
    const PreparedFile first = prepare(file);
    EXPECT_EQ(prepare(file), first);
    EXPECT_EQ(images.calls, 1);
    sandbox.write("photo.heic", "longer");
    EXPECT_NE(prepare(file), first);
    EXPECT_EQ(images.calls, 2);
    EXPECT_EQ(cacheNames().size(), 2U);
}

TEST_F(FilePreparationTest, TheSameFileAtTheSameTimeIsConvertedOnce) {
    const FileUrl file = sandbox.write("photo.heic", "one");
    images.meanwhile = [] { std::this_thread::sleep_for(std::chrono::milliseconds(50)); };
    const auto shared = preparation(walled);
    std::vector<std::jthread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] { EXPECT_EQ(shared.prepare(file, cache).file, result(file, "png")); });
    threads.clear();
    EXPECT_EQ(images.calls, 1);
}

TEST_F(FilePreparationTest, AFileThatChangesMeanwhileIsConvertedAnew) {
    const FileUrl file = sandbox.write("photo.heic", "before");
    const FileUrl before = result(file, "png");
    images.meanwhile = [&] {
        if (images.calls == 1)
            sandbox.write("photo.heic", "changed");
    };
    const PreparedFile prepared = prepare(file);
    EXPECT_THAT(Sandbox::read(prepared.file), testing::HasSubstr("changed"));
    EXPECT_EQ(prepared.file, result(file, "png"));
    EXPECT_FALSE(std::filesystem::exists(before.filesystemPath()));
}

TEST_F(FilePreparationTest, ImagesFailAsTheCodecSays) {
    const FileUrl broken = sandbox.write("broken.heic", "broken");
    EXPECT_EQ(prepare(broken), (PreparedFile{broken, "heic"}));
    images.refuses = true;
    EXPECT_EQ(failure([&] { prepare(sandbox.write("photo.heic")); }), "The image could not be decoded by macOS.");
    EXPECT_THAT(cacheNames(), IsEmpty());
}

TEST_F(FilePreparationTest, LibreOfficeGetsItsArguments) {
    // Some names cannot be told to LibreOffice, which then gets a link of another name; and what looks encoded in the
    // folder it would decode.
    for (const std::string folder : {"cache", "ca%41che 100%"})
        for (const std::string& name : {std::string("-dash 100%.docx"), std::string("\xff\xe4.docx"),
                                        std::string(243, 'n') + ".doc", std::string(244, 'n') + ".doc"}) {
            cache = sandbox.at(folder);
            const FileUrl file = sandbox.write(name, "write");
            const PreparedFile prepared = prepare(file);
            std::istringstream written(textInside(Sandbox::read(prepared.file)));
            std::vector<std::string> arguments;
            for (std::string line; std::getline(written, line);)
                arguments.push_back(line);
            ASSERT_EQ(arguments.size(), 8U);
            const FileUrl work{folder == "cache" ? arguments[6]
                                                 : arguments[6].erase(arguments[6].find("%2541") + 1, 2)};
            EXPECT_EQ(work.parent(), cache);
            const bool isTellable = isValidUtf8(name) && name.size() < 248;
            const FileUrl handedOver =
                isTellable ? file : work.appending(name.ends_with("docx") ? "document.docx" : "document.doc");
            EXPECT_EQ(arguments[0], "-env:UserInstallation=" + work.appending("profile").uri());
            EXPECT_EQ(arguments[7], handedOver.path());
            arguments.resize(6);
            EXPECT_THAT(std::span(arguments).subspan(1),
                        ElementsAre("--headless", "--norestore", "--convert-to", "pdf", "--outdir"));
        }
    EXPECT_EQ(cacheNames().size(), 4U);
}

TEST_F(FilePreparationTest, FfmpegGetsItsArguments) {
    const FileUrl file = sandbox.write("film.avi", "write");
    const auto arguments = [&](MediaKind kind) {
        std::string text = textInside(Sandbox::read(preparation(walled).transcode(file, cache, kind).file));
        // The output has a name of its own until it is finished, and the extension by which ffmpeg picks the format.
        const auto output = text.find(cache.path());
        EXPECT_NE(output, std::string::npos);
        const auto ext = text.substr(text.size() - 4, 3);
        EXPECT_EQ(ext, kind == MediaKind::audio ? "m4a" : "mp4");
        return text.substr(0, output);
    };
    EXPECT_EQ(arguments(MediaKind::audio), "-v\nerror\n-y\n-i\n" + file.path() + "\n-vn\n-c:a\naac\n");
    EXPECT_EQ(arguments(MediaKind::video), "-v\nerror\n-y\n-i\n" + file.path() +
                                               "\n-c:v\nlibx264\n-preset\nveryfast\n-crf\n23\n-pix_fmt\nyuv420p\n"
                                               "-c:a\naac\n-movflags\n+faststart\n");
    EXPECT_EQ(cacheNames().size(), 2U);
}

TEST_F(FilePreparationTest, FailingConvertersLeaveASentenceAndNothingElse) {
    for (const auto* confinement : {&walled, &limited})
        for (const std::string script : {"exit=1", "write exit=3", "write signal=11"}) {
            SCOPED_TRACE(script);
            const FileUrl letter = sandbox.write("letter.docx", script);
            EXPECT_EQ(failure([&] { preparation(*confinement).prepare(letter, cache); }), refused);
            const FileUrl film = sandbox.write("film.avi", std::string(1, '\0') + script);
            EXPECT_EQ(failure([&] { preparation(*confinement).transcode(film, cache, MediaKind::video); }), refused);
            EXPECT_THAT(cacheNames(), IsEmpty());
        }
    const FileUrl secret = sandbox.write("secret.pdf", tests::pdfAround("secret"));
    for (const std::string& script :
         {std::string("cut"), std::string("empty"), std::string("folder"), "link=" + secret.path()}) {
        SCOPED_TRACE(script);
        for (const auto* confinement : {&walled, &limited}) {
            const FileUrl letter = sandbox.write("letter.docx", script);
            EXPECT_EQ(failure([&] { preparation(*confinement).prepare(letter, cache); }), refused);
            const FileUrl film = sandbox.write("film.avi", std::string(1, '\0') + script);
            EXPECT_EQ(failure([&] { preparation(*confinement).transcode(film, cache, MediaKind::video); }), refused);
            EXPECT_THAT(cacheNames(), IsEmpty());
        }
    }
    const FileUrl silent = sandbox.write("silent.avi", "exit=0");
    EXPECT_EQ(failure([&] { preparation(walled).transcode(silent, cache, MediaKind::video); }), noCodec);
    const FileUrl missing = sandbox.at("missing.docx");
    EXPECT_EQ(failure([&] { prepare(missing); }), "“missing.docx” no longer exists.");
}

TEST_F(FilePreparationTest, WithoutTheWallNoTextReachesFfmpeg) {
    const FileUrl film = sandbox.at("film.avi");
    const auto transcode = [&] { preparation(limited).transcode(film, cache, MediaKind::video); };
    sandbox.write("film.avi", "write");
    EXPECT_EQ(failure(transcode), refused);
    sandbox.write("film.avi", std::string("\0write", 6));
    EXPECT_EQ(failure(transcode), "no failure");
}

TEST_F(FilePreparationTest, AConverterPastItsLimitIsEndedWithWhatItStarted) {
    for (const auto* confinement : {&walled, &limited})
        for (const char* script : {"write sleep", "write ignore-term fork sleep"}) {
            SCOPED_TRACE(script);
            clock.isPast = false;
            const std::string mark = newUuid();
            const FileUrl letter = sandbox.write(mark + ".docx", script);
            std::jthread watcher([&] {
                EXPECT_TRUE(tests::eventually([&] { return tests::processesNaming(mark) > 0; }));
                clock.isPast = true;
            });
            EXPECT_EQ(failure([&] { preparation(*confinement).prepare(letter, cache); }), timedOut);
            EXPECT_TRUE(tests::eventually([&] { return tests::processesNaming(mark) == 0 && cacheNames().empty(); }));
        }
}

TEST_F(FilePreparationTest, TheExporterComesFirstAndItsPartialOutputGoes) {
    const FileUrl film = sandbox.write("film.avi", "write");
    const FileUrl song = sandbox.write("song.wma", "write");
    const auto transcode = [&](const FileUrl& file, MediaKind kind) {
        std::filesystem::remove_all(cache.filesystemPath());
        return textInside(Sandbox::read(preparation(walled).transcode(file, cache, kind).file));
    };
    exporter.end = DrivenExporter::End::completes;
    EXPECT_EQ(transcode(film, MediaKind::video), "exported\n");
    EXPECT_EQ(exporter.preset, platform::ExportPreset::video1280x720);
    EXPECT_EQ(exporter.request->type, platform::ExportFileType::mpeg4);
    EXPECT_TRUE(exporter.request->optimizeForNetworkUse);
    EXPECT_EQ(transcode(song, MediaKind::audio), "exported\n");
    EXPECT_EQ(exporter.preset, platform::ExportPreset::audioM4a);
    EXPECT_EQ(exporter.request->type, platform::ExportFileType::m4a);

    exporter.end = DrivenExporter::End::fails;
    EXPECT_TRUE(transcode(film, MediaKind::video).starts_with("-v\n"));

    ffmpeg.clear();
    EXPECT_EQ(failure([&] { transcode(film, MediaKind::video); }), noCodec);
    EXPECT_THAT(cacheNames(), IsEmpty());
}

TEST_F(FilePreparationTest, AnExporterThatHangsIsCancelledAtTheLimit) {
    exporter.end = DrivenExporter::End::hangs;
    ffmpeg.clear();
    const FileUrl film = sandbox.write("film.avi", "write");
    std::jthread watcher([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        clock.isPast = true;
    });
    EXPECT_EQ(failure([&] { preparation(walled).transcode(film, cache, MediaKind::video); }), noCodec);
    EXPECT_TRUE(exporter.isCancelled);
    EXPECT_THAT(cacheNames(), IsEmpty());
}

TEST_F(FilePreparationTest, ConvertersAreTheFirstExecutableCandidates) {
    const FileUrl plain = sandbox.write("plain");
    const FileUrl second = sandbox.writeProgram("second");
    libreOffice = {sandbox.at("missing"), sandbox.root(), plain, second, FileUrl(STAND_IN)};
    ffmpeg = {plain};
    EXPECT_EQ(preparation(walled).libreOffice(), second);
    EXPECT_EQ(preparation(walled).ffmpeg(), std::nullopt);
    for (const char* version : {"suite7.9", "suite7.10"})
        sandbox.writeProgram(std::string(version) + "/program/soffice");
    libreOffice = {sandbox.at("missing"), sandbox.at("suite*/program/soffice")};
    EXPECT_EQ(preparation(walled).libreOffice(), sandbox.at("suite7.10/program/soffice"));
    libreOffice.clear();
    const FileUrl letter = sandbox.write("letter.docx", "write");
    EXPECT_EQ(prepare(letter), (PreparedFile{letter, "docx"}));
}

TEST_F(FilePreparationTest, ACandidateThatCannotStartYieldsToTheNext) {
    const FileUrl broken = sandbox.writeProgram("broken", "#!/nonexistent/interpreter\n");
    const FileUrl unloadable = sandbox.writeProgram("unloadable", "#!/bin/sh\nexit 127\n");
    const FileUrl failing = sandbox.writeProgram("failing", "#!/bin/sh\nexit 1\n");
    const FileUrl letter = sandbox.write("letter.docx", "write");
    for (const auto* confinement : {&walled, &limited}) {
        libreOffice = {broken, unloadable, FileUrl(STAND_IN)};
        EXPECT_EQ(preparation(*confinement).prepare(letter, cache).ext, "pdf");
        std::filesystem::remove_all(cache.filesystemPath());
        libreOffice = {failing, FileUrl(STAND_IN)};
        EXPECT_EQ(failure([&] { preparation(*confinement).prepare(letter, cache); }), refused);
        libreOffice = {broken, unloadable};
        EXPECT_NE(failure([&] { preparation(*confinement).prepare(letter, cache); }), "no failure");
        EXPECT_THAT(cacheNames(), IsEmpty());
    }
}

TEST_F(FilePreparationTest, ACacheThatCannotBeUsedNamesTheDocument) {
    sandbox.write("file", "not a folder");
    std::filesystem::create_symlink("nowhere", sandbox.at("link").path());
    std::filesystem::permissions(sandbox.folder("open to all").filesystemPath(), std::filesystem::perms::all);
    const FileUrl letter = sandbox.write("letter.docx", "write");
    const FileUrl photo = sandbox.write("photo.heic", "image");
    for (const char* name : {"file", "file/below", "link", "link/below", "open to all"}) {
        SCOPED_TRACE(name);
        cache = sandbox.at(name);
        const std::string planted = "planted by somebody else";
        if (std::string_view(name) == "open to all")
            for (const FileUrl& file : {result(letter, "pdf"), result(photo, "png")})
                sandbox.write("open to all/" + file.lastPathComponent(), planted);
        EXPECT_EQ(failure([&] { prepare(letter); }), "“letter.docx” could not be converted because the folder for "
                                                     "converted files cannot be used.");
        EXPECT_EQ(prepare(photo), (PreparedFile{photo, "heic"}));
    }
    EXPECT_EQ(Sandbox::read(sandbox.at("file")), "not a folder");
    // A link to a folder is a folder.
    std::filesystem::permissions(sandbox.folder("elsewhere").filesystemPath(), std::filesystem::perms::owner_all);
    std::filesystem::create_directory_symlink(sandbox.at("elsewhere").path(), sandbox.at("folder").path());
    cache = sandbox.at("folder");
    EXPECT_EQ(prepare(letter).ext, "pdf");
}

TEST_F(FilePreparationTest, OnlyARegularFileIsAResult) {
    const FileUrl letter = sandbox.write("letter.docx", "write");
    const FileUrl secret = sandbox.write("secret.pdf", tests::pdfAround("secret"));
    sandbox.folder("cache");
    std::filesystem::permissions(cache.filesystemPath(), std::filesystem::perms::owner_all);
    std::filesystem::create_symlink(secret.path(), result(letter, "pdf").path());
    EXPECT_THAT(Sandbox::read(prepare(letter).file), testing::Not(testing::HasSubstr("secret")));
    EXPECT_FALSE(std::filesystem::is_symlink(result(letter, "pdf").path()));
    EXPECT_THAT(Sandbox::read(secret), testing::HasSubstr("secret"));
}

TEST_F(FilePreparationTest, AllWhoWaitForAFileThatChangesGetItAsItIs) {
    const FileUrl file = sandbox.write("photo.heic", "before");
    const auto shared = preparation(walled);
    std::latch firstRuns(1);
    std::latch hasChanged(1);
    images.meanwhile = [&] {
        if (images.calls != 1)
            return;
        firstRuns.count_down();
        hasChanged.wait();
    };
    std::vector<std::optional<PreparedFile>> prepared(3);
    const auto ask = [&](std::optional<PreparedFile>& answer) {
        return std::jthread([&] { answer = shared.prepare(file, cache); });
    };
    std::jthread first = ask(prepared[0]);
    firstRuns.wait();
    std::vector<std::jthread> others;
    for (const size_t i : {1U, 2U})
        others.push_back(ask(prepared[i]));
    // They have found the first at work, on what the file holds now.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    sandbox.write("photo.heic", "changed");
    hasChanged.count_down();
    first.join();
    others.clear();
    for (const auto& answer : prepared)
        EXPECT_EQ(answer, (PreparedFile{result(file, "png"), "png"}));
    EXPECT_EQ(images.calls, 2);
}

TEST_F(FilePreparationTest, ASupersededRequestEndsSilentlyUnlessItsConverterRuns) {
    const FileUrl film = sandbox.write("film.avi", std::string("\0write", 6));
    std::stop_source superseded;
    superseded.request_stop();
    EXPECT_THROW(preparation(walled).prepare(film, cache, superseded.get_token()), CancellationError);
    EXPECT_THAT(cacheNames(), IsEmpty());
    // What is there already needs no converter.
    const PreparedFile prepared = preparation(walled).prepare(film, cache);
    EXPECT_EQ(preparation(walled).prepare(film, cache, superseded.get_token()), prepared);
    std::stop_source late;
    const FileUrl photo = sandbox.write("photo.heic", "image");
    images.meanwhile = [&] { late.request_stop(); };
    EXPECT_EQ(preparation(walled).prepare(photo, cache, late.get_token()).ext, "png");
}

TEST_F(FilePreparationTest, NoPlaylistReachesFfmpegWhateverStandsBeforeIt) {
    for (const std::string mark : {"ffconcat version 1.0", "#EXTM3U", "<mpd profiles=\"urn:mpeg:dash:profile:full\">",
                                   "<CompositionPlaylist>", "c=IN IP4 127.0.0.1", "# VobSub index file, v7"})
        for (const std::string& before : {std::string(1, '\1'), "ID3" + std::string(600'000, '\0')}) {
            SCOPED_TRACE(mark);
            const FileUrl film = sandbox.write("film.avi", " write exit=0 " + before + "\n" + mark + "\n");
            EXPECT_EQ(failure([&] { preparation(walled).transcode(film, cache, MediaKind::video); }), refused);
        }
}

TEST_F(FilePreparationTest, TransportStreamsHaveThreeSyncBytes) {
    const auto bytes = [](size_t size, std::initializer_list<size_t> sync) {
        std::string contents(size, 'x');
        for (const size_t at : sync)
            contents[at] = 'G';
        return contents;
    };
    const struct {
        const char* name;
        std::string contents;
        bool expected;
    } rows[] = {
        {"empty", "", false},
        {"text", "Good Going, Greta: " + std::string(1000, 'x'), false},
        {"one byte short", bytes(376, {0, 188}), false},
        {"just long enough", bytes(377, {0, 188, 376}), true},
        {"last offset", bytes(1000, {187, 375, 563}), true},
        {"past the last offset", bytes(1000, {192, 380, 568}), false},
        {"packets of 192", bytes(1000, {4, 196, 388}), true},
        {"two of three", bytes(1000, {4, 196}), false},
        {"beyond the head", bytes(9000, {3800, 3988, 4176}), false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FilePreparation::isTransportStream(sandbox.write("file.ts", row.contents)), row.expected) << row.name;
    EXPECT_FALSE(FilePreparation::isTransportStream(sandbox.at("missing.ts")));
}

} // namespace
} // namespace quillmere
