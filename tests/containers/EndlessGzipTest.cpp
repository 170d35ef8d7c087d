#include "containers/ContainerMessages.h"
#include "tests/containers/Fixtures.h"
#include "tests/containers/SelfReferentialGzip.h"

#include <gmock/gmock.h>
#include <zlib.h>

namespace quillmere::testing {
namespace {

using ::testing::StartsWith;

/// The whole file as one gzip member, which must end where the file ends.
std::string unpacked(std::string file) {
    std::string bytes(1'000, '\0');
    z_stream stream{};
    stream.next_in = reinterpret_cast<Bytef*>(file.data());
    stream.avail_in = static_cast<uInt>(file.size());
    stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    constexpr int gzipOnly = 16 + MAX_WBITS;
    const bool isWhole = inflateInit2(&stream, gzipOnly) == Z_OK && inflate(&stream, Z_FINISH) == Z_STREAM_END;
    inflateEnd(&stream);
    bytes.resize(isWhole && stream.avail_in == 0 ? stream.total_out : 0);
    return bytes;
}

class EndlessGzip : public ContainerFixture {
protected:
    /// The reading time never ends by itself: whatever stops the reading is not the clock.
    void stopClock() {
        clock_ = [now = steadyNow()] { return now; };
    }
    const std::string endless_ = selfReferentialGzip();
};

TEST_F(EndlessGzip, UnpacksToItself) {
    EXPECT_EQ(endless_.size(), 120U);
    EXPECT_EQ(unpacked(endless_), endless_);
}

TEST_F(EndlessGzip, IsRefusedWhateverItsName) {
    stopClock();
    for (const char* name : {"evil.gz", "evil.zip", "evil.tgz", "evil.tar.gz"}) {
        SCOPED_TRACE(name);
        EXPECT_THAT(failureOf([&] { browse(write(name, endless_)); }), StartsWith(messages::readFailurePrefix));
        // As often as it is tried, also from inside an archive.
        const auto outer = browse(write("outer.zip", zipOf({{.name = name, .data = endless_}})));
        for (int attempt = 0; attempt < 2; ++attempt)
            EXPECT_THAT(failureOf([&] { open(outer, name); }), StartsWith(messages::readFailurePrefix));
    }
}

TEST_F(EndlessGzip, ReadingStopsWhenItIsNoLongerWanted) {
    stopClock();
    const auto file = write("evil.gz", endless_);
    EXPECT_EQ(failureOf([&] { browser_->browse(file, std::nullopt, std::nullopt, [] { return true; }); }), "cancelled");
    const auto outer = browse(write("outer.zip", zipOf({{.name = "evil.gz", .data = endless_}})));
    EXPECT_EQ(failureOf([&] {
                  browser_->open(text(outer, "token"), text(*entryNamed(outer, "evil.gz"), "id"), [] { return true; });
              }),
              "cancelled");
    EXPECT_EQ(namesOf(browser_->refresh(text(outer, "token"), never_)), std::vector<std::string>{"evil.gz"});
}

} // namespace
} // namespace quillmere::testing
