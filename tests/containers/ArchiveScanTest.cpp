#include "containers/ArchiveScan.h"
#include "containers/ContainerMessages.h"
#include "helpers/archive-reader/LibarchiveReader.h"
#include "tests/containers/Fixtures.h"

#include <filesystem>
#include <gmock/gmock.h>

namespace quillmere::testing {
namespace {

using namespace messages;
using ::testing::ElementsAre;
using ::testing::StartsWith;

constexpr uint32_t mebibyte = 1'048'576;
constexpr uint16_t deflated = 8;

std::vector<TarMember> filesNumbered(int count, const std::string& prefix = "f", const std::string& suffix = "") {
    std::vector<TarMember> members;
    for (int i = 0; i < count; ++i)
        members.push_back({.name = prefix + std::to_string(i) + suffix});
    return members;
}

std::string zipNamed(const std::string& name) {
    return zipOf({{.name = name, .data = "x"}});
}

/// Members of these declared sizes, none of which holds anything, beside `padding` bytes that are there.
std::string zipDeclaring(const std::vector<uint32_t>& sizes, size_t padding = 0) {
    std::vector<ZipMember> members;
    for (const auto size : sizes)
        members.push_back({.name = "m" + std::to_string(members.size()), .declared = size, .method = deflated});
    if (padding > 0)
        members.push_back({.name = "padding", .data = std::string(padding, 'p')});
    return zipOf(members);
}

std::string components(int count) {
    std::string path = "c";
    for (int i = 1; i < count; ++i)
        path += "/c";
    return path;
}

std::string encryptedRar() {
    // A main header that says that all further headers are encrypted; its checksum is of the bytes after it.
    return std::string("Rar!\x1a\x07\x00\xce\x99\x73\x80\x00\x0d\x00\x00\x00\x00\x00\x00\x00", 20);
}

/// A zip that can only be read from front to back and tells its sizes behind the data.
std::string streamedZip() {
    constexpr uint16_t sizesBehind = 8;
    return archiveOf("raw", "gzip",
                     {{.name = "data", .data = zipOf({{.name = "a", .method = deflated, .flags = sizesBehind}})}});
}

/// The second member lies inside the first one's data.
std::string overlappingZip() {
    ZipMember inner{.name = "b", .declared = 300 * mebibyte, .method = deflated};
    const ZipMember outer{.name = "a", .data = zipOf({inner}), .declared = 300 * mebibyte, .method = deflated};
    inner.offset = 31;
    return zipOf({outer, inner});
}

struct Row {
    const char* label;
    std::string file;
    std::string bytes;
    std::string failure; ///< start of the sentence; empty: it can be browsed
};

std::vector<Row> rows() {
    const auto tar = [](std::vector<TarMember> members) { return tarOf(members); };
    const std::string whole = tar({{.name = "a", .data = std::string(5'000, 'a')}});
    return {
        {"empty tar", "a.tar", tar({}), ""},
        {"dots and doubled slashes", "a.zip", zipNamed("./a//b"), ""},
        {"absolute", "a.zip", zipNamed("/etc/x"), unsafeOrUnsupportedPath},
        {"drive", "a.tar", tar({{.name = "C:\\x"}}), unsafeOrUnsupportedPath},
        {"backslash", "a.tar", tar({{.name = "a\\b"}}), unsafeOrUnsupportedPath},
        {"colon", "a.tar", tar({{.name = "a:b"}}), unsafeOrUnsupportedPath},
        {"tab", "a.tar", tar({{.name = "a\tb"}}), unsafeOrUnsupportedPath},
        {"delete character", "a.tar", tar({{.name = "a\x7f"}}), unsafeOrUnsupportedPath},
        {"climbing", "a.tar", tar({{.name = "../x"}}), unsafePath},
        {"climbing from inside", "a.tar", tar({{.name = "a/../../x"}}), unsafePath},
        {"64 components", "a.zip", zipNamed(components(64)), ""},
        {"65 components", "a.zip", zipNamed(components(65)), unsafePath},
        {"4096 bytes", "a.zip", zipNamed(std::string(4'096, 'n')), ""},
        {"4097 bytes", "a.zip", zipNamed(std::string(4'097, 'n')), unsafeOrUnsupportedPath},
        {"name longer than a frame", "a.zip", zipNamed(std::string(65'000, 'n')), unsafeOrUnsupportedPath},
        {"invalid UTF-8", "a.tar", tar({{.name = "a\xff"}}), undecodableName},
        {"10,000 headers", "a.tar", tar(filesNumbered(10'000)), ""},
        {"10,001 headers", "a.tar", tar(filesNumbered(10'001)), tooManyEntries},
        {"10,000 nodes", "a.tar", tar(filesNumbered(5'000, "d", "/f")), ""},
        {"10,001 nodes", "a.tar", tar(filesNumbered(5'000, "d", "/f")).substr(0, 5'000 * 512) + tar({{.name = "x"}}),
         tooManyFolders},
        {"duplicate", "a.tar", tar({{.name = "a"}, {.name = "./a"}}), duplicatePaths},
        {"unknown size", "a.tar", streamedZip(), unknownSize},
        {"folder after its content", "a.tar", tar({{.name = "a/b.txt"}, {.name = "a/", .type = '5'}}), ""},
        {"file on a folder", "a.tar", tar({{.name = "a/b.txt"}, {.name = "a"}}), conflictingPaths},
        {"below a file", "a.tar", tar({{.name = "a"}, {.name = "a/b.txt"}}), crossesFilePath},
        {"below a link", "a.tar", tar({{.name = "a", .type = '2', .link = "/etc"}, {.name = "a/passwd"}}),
         crossesFilePath},
        {"small archive at its budget", "a.zip", zipDeclaring({500 * mebibyte}), ""},
        {"small archive past its budget", "a.zip", zipDeclaring({500 * mebibyte, 1}), expansionRatio},
        {"tar that declares much", "a.tar", tar({{.name = "a", .declared = 600'000'000}}), expansionRatio},
        {"2 GB in all", "a.zip", zipDeclaring({1024 * mebibyte, 1019 * mebibyte}, 5 * mebibyte), ""},
        {"2 GB and a byte", "a.zip", zipDeclaring({1024 * mebibyte, 1019 * mebibyte + 1}, 5 * mebibyte), expandsTooFar},
        {"overlapping members", "a.zip", overlappingZip(), expansionRatio},
        {"encrypted headers", "a.rar", encryptedRar(), encryptedArchive},
        {"truncated", "a.tar", whole.substr(0, 2'000), readFailurePrefix},
        {"garbage", "a.7z", std::string(3'000, 'g'), readFailurePrefix},
        {"nothing", "a.zip", "", ""},
        {"external filter", "a.zip", std::string("\x89LZO\x00\x0d\x0a\x1a\x0a 1234567890", 20), readFailurePrefix},
    };
}

class ArchiveScans : public ContainerFixture {};

TEST_F(ArchiveScans, ScanTakesOrRefusesTheWholeArchive) {
    for (const bool inProcess : {false, true}) {
        for (const auto& row : rows()) {
            // Only the confined reader is kept from running programs.
            if (inProcess && std::string_view(row.label) == "external filter")
                continue;
            SCOPED_TRACE(std::string(row.label) + (inProcess ? ", in process" : ", confined"));
            useReaders(inProcess ? LibarchiveReader::factory() : confinedReaders());
            const FileUrl file = write(row.file, row.bytes);
            const std::string failure = failureOf([&] { browse(file); });
            if (row.failure.empty())
                EXPECT_EQ(failure, "");
            else
                EXPECT_THAT(failure, StartsWith(row.failure));
        }
    }
}

TEST_F(ArchiveScans, ArchiveSizeIsLimited) {
    const FileUrl file = write("a.tar", "");
    std::filesystem::resize_file(file.filesystemPath(), 1'073'741'824);
    EXPECT_EQ(failureOf([&] { browse(file); }), "");
    std::filesystem::resize_file(file.filesystemPath(), 1'073'741'825);
    EXPECT_EQ(failureOf([&] { browse(file); }), archiveTooLarge);
}

TEST_F(ArchiveScans, EntriesAreBlockedForTheirOwnReasons) {
    struct Case {
        const char* label;
        std::string bytes;
        const char* blocked;
    };
    const Case cases[] = {
        {"encrypted", zipOf({{.name = "e", .data = std::string(20, 'e'), .flags = 1}}), blockedEncrypted},
        {"symbolic link", tarOf({{.name = "e", .type = '2', .link = "/etc/passwd"}}), blockedArchiveLink},
        {"hard link", tarOf({{.name = "f"}, {.name = "e", .type = '1', .link = "f"}}), blockedArchiveLink},
        {"pipe", tarOf({{.name = "e", .type = '6'}}), blockedArchiveSpecial},
        {"256 MB", zipDeclaring({268'435'456}), nullptr},
        {"256 MB and a byte", zipDeclaring({268'435'457}), blockedTooLarge},
    };
    for (const auto& [label, bytes, blocked] : cases) {
        SCOPED_TRACE(label);
        const auto listing = browse(write("a.zip", bytes));
        const auto& entry = listing.at("entries").as_array().at(0).as_object();
        if (!blocked) {
            EXPECT_FALSE(entry.contains("blockedReason"));
            continue;
        }
        EXPECT_EQ(text(entry, "blockedReason"), blocked);
        EXPECT_EQ(failureOf([&] { open(listing, text(entry, "name")); }), blocked);
    }
}

TEST_F(ArchiveScans, TreeHoldsEntriesAndImpliedFolders) {
    auto root = browse(write("a.tar", tarOf({{.name = "./", .type = '5'},
                                             {.name = "./docs/img/a.PNG", .data = "12345"},
                                             {.name = "./docs/", .type = '5'},
                                             {.name = "top"}})));
    EXPECT_THAT(namesOf(root), ElementsAre("docs", "top"));
    EXPECT_DOUBLE_EQ(entryNamed(root, "docs")->at("modified").as_double(), 1.7e12);
    const auto docs = enter(root, "docs");
    EXPECT_EQ(entryNamed(docs, "img")->at("modified").as_double(), 0);
    EXPECT_EQ(entryNamed(docs, "img")->at("size").as_int64(), 0);
    const auto img = enter(docs, "img");
    EXPECT_EQ(text(img, "path"), path("a.tar").path() + " / docs/img");
    EXPECT_EQ(text(*entryNamed(img, "a.PNG"), "ext"), "png");
    EXPECT_EQ(entryNamed(img, "a.PNG")->at("size").as_int64(), 5);
}

TEST_F(ArchiveScans, FormatsListAndExtract) {
    const char* const formats[][2] = {{"zip", "none"}, {"7zip", "none"}, {"iso9660", "none"}, {"cpio", "none"},
                                      {"pax", "gzip"}, {"pax", "xz"},    {"gnutar", "bzip2"}, {"pax", "lz4"}};
    for (const auto& [format, filter] : formats) {
        SCOPED_TRACE(std::string(format) + " " + filter);
        const std::string last(100'000, 'z');
        const auto bytes = archiveOf(format, filter, {{.name = "first", .data = "1"}, {.name = "last", .data = last}});
        const auto listing = browse(write("a.zip", bytes));
        EXPECT_EQ(contentsOf(document(listing, "last").file), last);
    }
}

TEST_F(ArchiveScans, SingleCompressedFileIsOneEntry) {
    const auto gzip = archiveOf("raw", "gzip", {{.name = "data", .data = "words"}});
    const auto listing = browse(write("notes.txt.gz", gzip));
    ASSERT_THAT(namesOf(listing), ElementsAre("notes.txt"));
    EXPECT_TRUE(entryNamed(listing, "notes.txt")->at("size").is_null());
    EXPECT_EQ(contentsOf(document(listing, "notes.txt").file), "words");
    // Only these extensions may be something else than an archive.
    EXPECT_THAT(failureOf([&] { browse(write("notes.tgz", gzip)); }), StartsWith(readFailurePrefix));
}

TEST_F(ArchiveScans, DamagedFilesUnderEveryExtensionFailWithASentence) {
    const std::string whole[] = {zipOf({{.name = "a", .data = std::string(900, 'a')}}),
                                 archiveOf("7zip", "none", {{.name = "a", .data = std::string(900, 'a')}}),
                                 archiveOf("pax", "gzip", {{.name = "a", .data = std::string(900, 'a')}}),
                                 archiveOf("pax", "xz", {{.name = "a", .data = std::string(900, 'a')}})};
    for (const char* extension : {"zip", "7z",   "rar", "tar", "gz",   "gzip", "bz2",  "bzip2", "xz",  "tgz",
                                  "tbz", "tbz2", "txz", "cab", "cpio", "iso",  "cbz",  "cbr",   "cb7", "cbt",
                                  "jar", "war",  "ear", "apk", "ipa",  "xpi",  "vsix", "nupkg", "whl"}) {
        SCOPED_TRACE(extension);
        const auto file = std::string("a.") + extension;
        useReaders(LibarchiveReader::factory());
        for (const auto& source : whole)
            for (size_t cut = 40; cut < source.size(); cut += source.size() / 3) {
                const auto failure = failureOf([&, length = cut] { browse(write(file, source.substr(0, length))); });
                EXPECT_TRUE(failure.empty() || failure.starts_with(readFailurePrefix) || failure == unknownSize)
                    << failure;
            }
        useReaders(confinedReaders());
        const bool isRaw = rawFormatOf(path(file)) == RawFormat::accepted;
        EXPECT_THAT(failureOf([&] { browse(write(file, std::string(3'000, 'g'))); }),
                    StartsWith(isRaw ? "" : readFailurePrefix));
    }
}

} // namespace
} // namespace quillmere::testing
