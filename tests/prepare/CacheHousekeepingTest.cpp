#include "prepare/CacheHousekeeping.h"

#include "tests/support/Sandbox.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace quillmere {
namespace {

using tests::Sandbox;

const WallTime now{std::chrono::seconds(1'700'000'000)};

void setAge(const FileUrl& file, std::chrono::nanoseconds age) {
    const auto time = (now - age).time_since_epoch();
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    const timespec times[2]{{0, 0}, {seconds.count(), (time - seconds).count()}};
    ::utimensat(AT_FDCWD, file.path().c_str(), times, AT_SYMLINK_NOFOLLOW);
}

TEST(CacheHousekeeping, RemovesWhatIsOlderThanTwoWeeks) {
    using std::chrono::seconds;
    constexpr seconds limit(1'209'600);
    const Sandbox sandbox;
    const FileUrl outside = sandbox.write("outside/kept", "kept");
    const struct {
        const char* name;
        std::chrono::nanoseconds age;
    } rows[] = {
        {"just.pdf", limit},
        {"older.pdf", limit + std::chrono::nanoseconds(1000)},
        {"old work/profile/x", limit + seconds(1)},
        {"fresh work/x", seconds(0)},
        {"ContainerPreviews/x", limit + seconds(9)},
        {"containerpreviews/x", limit + seconds(9)},
        {".hidden", limit + seconds(9)},
        {"future", -seconds(9)},
    };
    for (const auto& row : rows)
        sandbox.write("cache/" + std::string(row.name), "x");
    std::filesystem::create_directory_symlink(outside.parent().path(), sandbox.at("cache/old link").path());
    setAge(sandbox.at("cache/old link"), limit + seconds(9));
    for (const auto& row : rows) {
        const std::string name = row.name;
        setAge(sandbox.at("cache/" + name.substr(0, name.find('/'))), row.age);
    }
    setAge(sandbox.at("cache/fresh work/x"), limit + seconds(9));

    // A user may have put the cache elsewhere.
    std::filesystem::create_directory_symlink(sandbox.at("cache").path(), sandbox.at("link").path());
    cleanPreviewCache(sandbox.at("link"), now);
    EXPECT_THAT(sandbox.names("cache"), testing::ElementsAre("ContainerPreviews", "fresh work", "future", "just.pdf"));
    EXPECT_EQ(sandbox.names("cache/fresh work").size(), 1U);
    EXPECT_EQ(Sandbox::read(outside), "kept");

    cleanPreviewCache(sandbox.at("missing"), now);
    cleanPreviewCache(outside, now);
    EXPECT_FALSE(std::filesystem::exists(sandbox.at("missing").path()));
    EXPECT_EQ(Sandbox::read(outside), "kept");
}

TEST(CacheHousekeeping, DatesFarFromNowKeepTheirOrder) {
    const Sandbox sandbox;
    // A file system that cannot keep such a date moves it to the nearest that it can, which lies on the same side.
    const struct {
        const char* name;
        time_t seconds;
    } rows[] = {{"after 2262", 9'300'000'000}, {"after 2400", 15'000'000'000}, {"before 1970", -2'000'000'000}};
    for (const auto& row : rows) {
        const timespec times[2]{{0, 0}, {row.seconds, 0}};
        ::utimensat(AT_FDCWD, sandbox.write("cache/" + std::string(row.name)).path().c_str(), times, 0);
    }
    cleanPreviewCache(sandbox.at("cache"), now);
    EXPECT_THAT(sandbox.names("cache"), testing::ElementsAre("after 2262", "after 2400"));
}

} // namespace
} // namespace quillmere
