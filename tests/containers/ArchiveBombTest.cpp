#include "containers/ContainerMessages.h"
#include "tests/containers/Fixtures.h"

#include <filesystem>
#include <gmock/gmock.h>

namespace quillmere::testing {
namespace {

using namespace messages;
using ::testing::StartsWith;
namespace fs = std::filesystem;

constexpr uint32_t mebibyte = 1'048'576;
constexpr uint16_t deflated = 8;

std::string packed(const char* filter, const std::string& bytes) {
    return archiveOf("raw", filter, {{.name = "data", .data = bytes}});
}

std::string repeated(const std::string& piece, int count) {
    std::string bytes;
    for (int i = 0; i < count; ++i)
        bytes += piece;
    return bytes;
}

/// A whole deflate stream without the gzip header and trailer around it.
std::string deflateOf(const std::string& bytes) {
    const auto gzip = packed("gzip", bytes);
    return gzip.substr(10, gzip.size() - 18);
}

class ArchiveBombs : public ContainerFixture {
protected:
    void expectNothingLeft(const JsonObject& listing) const {
        EXPECT_TRUE(fs::is_empty(sessionCache(listing).filesystemPath()));
    }
};

TEST_F(ArchiveBombs, DataWithoutADeclaredSizeStopsAtTheLargestFile) {
    // Packed pieces in a row are one stream, of 256 MiB and a piece. Only zeros would be an empty tar.
    const std::string ones(8 * mebibyte, '1');
    for (const auto& [filter, name] :
         {std::pair{"gzip", "ones.gz"}, {"bzip2", "ones.bz2"}, {"xz", "ones.xz"}, {"zstd", "ones.gzip"}}) {
        SCOPED_TRACE(filter);
        const auto listing = browse(write(name, repeated(packed(filter, ones), 33)));
        EXPECT_EQ(failureOf([&] { open(listing, "ones"); }), entryTooLong);
        expectNothingLeft(listing);
    }
}

TEST_F(ArchiveBombs, PackedArchivesAreHeldToTheirExpansion) {
    for (const char* filter : {"gzip", "bzip2", "xz", "zstd"}) {
        const auto bytes = packed(filter, tarOf({{.name = "a", .declared = 500ULL * mebibyte + 1}}));
        EXPECT_EQ(failureOf([&] { browse(write("a.tgz", bytes)); }), expansionRatio) << filter;
    }
    // Just the most that a small archive may hold, and all of it is there.
    const auto header = tarOf({{.name = "a", .declared = 500ULL * mebibyte}}).substr(0, 512);
    const auto zeros = packed("gzip", std::string(10 * mebibyte, '\0'));
    const auto listing = browse(write("a.tgz", packed("gzip", header) + repeated(zeros, 50) + packed("gzip", "")));
    EXPECT_EQ(failureOf([&] { open(listing, "a"); }), blockedTooLarge);
}

TEST_F(ArchiveBombs, LargerArchivesMayHoldFiveHundredTimesTheirSize) {
    constexpr uint32_t padding = 2'000'000;
    const auto zip = [](uint32_t declared) {
        return zipOf({{.name = "a", .declared = declared, .method = deflated},
                      {.name = "padding", .data = std::string(padding, 'p')}});
    };
    const auto most = static_cast<uint32_t>(500 * zip(0).size() - padding);
    EXPECT_EQ(failureOf([&] { browse(write("a.zip", zip(most))); }), "");
    EXPECT_EQ(failureOf([&] { browse(write("a.zip", zip(most + 1))); }), expansionRatio);
}

TEST_F(ArchiveBombs, ManyPackedMembersAddUp) {
    const auto deflate = deflateOf(std::string(8 * mebibyte, '\0'));
    std::vector<ZipMember> members;
    for (int i = 0; i < 63; ++i)
        members.push_back({.name = std::to_string(i), .data = deflate, .declared = 8 * mebibyte, .method = deflated});
    EXPECT_EQ(failureOf([&] { browse(write("a.zip", zipOf(members))); }), expansionRatio);
    members.resize(62);
    EXPECT_EQ(failureOf([&] { browse(write("a.zip", zipOf(members))); }), "");
}

TEST_F(ArchiveBombs, LargeMemberOfASmallArchiveIsBlocked) {
    const auto bytes = archiveOf("7zip", "none", {{.name = "a", .data = std::string(256 * mebibyte + 1, '\0')}});
    const auto listing = browse(write("a.7z", bytes));
    EXPECT_EQ(failureOf([&] { open(listing, "a"); }), blockedTooLarge);
}

TEST_F(ArchiveBombs, MemberThatHoldsMoreThanItDeclares) {
    const auto deflate = deflateOf(std::string(8 * mebibyte, '\0'));
    const auto listing =
        browse(write("a.zip", zipOf({{.name = "a", .data = deflate, .declared = 1'000, .method = deflated}})));
    EXPECT_THAT(failureOf([&] { open(listing, "a"); }),
                ::testing::AnyOf(::testing::Eq(entryTooLong), StartsWith(readFailurePrefix)));
    expectNothingLeft(listing);
}

TEST_F(ArchiveBombs, EndlessLayersOfCompressionAreRefused) {
    std::string layers = "bottom";
    for (int i = 0; i < 40; ++i)
        layers = packed("gzip", layers);
    for (const char* name : {"a.gz", "a.tgz"})
        EXPECT_THAT(failureOf([&] { browse(write(name, layers)); }), StartsWith(readFailurePrefix)) << name;
}

} // namespace
} // namespace quillmere::testing
