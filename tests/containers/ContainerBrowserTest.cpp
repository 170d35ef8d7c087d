#include "base/Uuid.h"
#include "containers/ContainerMessages.h"
#include "tests/containers/Fixtures.h"

#include <filesystem>
#include <gmock/gmock.h>

namespace quillmere::testing {
namespace {

using namespace messages;
using ::testing::ElementsAre;
namespace fs = std::filesystem;

class ContainerSessions : public ContainerFixture {
protected:
    bool isOpen(const JsonObject& listing) {
        return failureOf([&] { browser_->refresh(text(listing, "token"), never_); }) != sessionExpired;
    }
    /// A zip in a zip in a zip ..., `levels` deep, with a text at the bottom.
    FileUrl nestedZip(int levels) const {
        std::string bytes = zipOf({{.name = "note.txt", .data = "bottom"}});
        for (int level = 1; level < levels; ++level)
            bytes = zipOf({{.name = "inner.zip", .data = bytes}});
        return write("nested.zip", bytes);
    }
};

TEST_F(ContainerSessions, ListingTellsTheFolder) {
    makeFolder("dir/sub");
    write("dir/a.TXT", "abc");
    const auto root = browser_->browse(path("dir"), std::nullopt, "/x/dir", never_);
    EXPECT_TRUE(isUuid(text(root, "token")));
    EXPECT_EQ(text(root, "name"), "dir");
    EXPECT_EQ(text(root, "kind"), "folder");
    EXPECT_EQ(text(root, "path"), "/x/dir");
    EXPECT_TRUE(root.at("parentId").is_null());
    const auto& file = *entryNamed(root, "a.TXT");
    EXPECT_FALSE(file.at("isDirectory").as_bool());
    EXPECT_EQ(file.at("size").as_int64(), 3);
    EXPECT_EQ(text(file, "ext"), "txt");
    EXPECT_EQ(text(*entryNamed(root, "sub"), "ext"), "");
    const auto sub = enter(root, "sub");
    EXPECT_EQ(text(sub, "path"), "/x/dir/sub");
    EXPECT_EQ(text(sub, "parentId"), "parent");
    EXPECT_EQ(text(browser_->up(text(sub, "token"), never_), "path"), "/x/dir");
    EXPECT_TRUE(browser_->up(text(sub, "token"), never_).at("parentId").is_null());
}

TEST_F(ContainerSessions, NamesStandInNaturalOrder) {
    for (const char* name : {"dir/file10", "dir/File2", "dir/file1", "dir/a", "dir/\xC3\xA4hnlich", "dir/b"})
        write((makeFolder("dir"), name), "");
    makeFolder("dir/z");
    EXPECT_THAT(namesOf(browse(path("dir"))), ElementsAre("z", "a", "\xC3\xA4hnlich", "b", "file1", "File2", "file10"));
}

TEST_F(ContainerSessions, OnlyContainersOpen) {
    EXPECT_EQ(failureOf([&] { browse(write("a.txt", "x")); }), notAContainer);
    EXPECT_EQ(failureOf([&] { browse(FileUrl("/dev/null")); }), notAContainer);
    EXPECT_EQ(failureOf([&] { browse(path("gone.zip")); }), "“gone.zip” no longer exists.");
    EXPECT_TRUE(ContainerBrowser::isContainer(path("missing.CbZ")));
    EXPECT_FALSE(ContainerBrowser::isContainer(path("missing.txt")));
    EXPECT_TRUE(ContainerBrowser::isContainer(folder_));
    fs::create_symlink(makeFolder("dir").path(), path("link").filesystemPath());
    EXPECT_EQ(text(browse(path("link")), "name"), "dir");
}

TEST_F(ContainerSessions, NinthSessionClosesTheOldest) {
    std::vector<JsonObject> open;
    open.push_back(browse(write("a.zip", zipOf({{.name = "a.txt", .data = "x"}}))));
    document(open.front(), "a.txt");
    for (int i = 1; i < 8; ++i)
        open.push_back(browse(makeFolder("d" + std::to_string(i))));
    EXPECT_TRUE(isOpen(open.front()));
    EXPECT_TRUE(fs::exists(sessionCache(open.front()).filesystemPath()));
    open.push_back(browse(makeFolder("d8")));
    EXPECT_FALSE(isOpen(open.front()));
    EXPECT_FALSE(fs::exists(sessionCache(open.front()).filesystemPath()));
    EXPECT_TRUE(isOpen(open.at(1)));
}

TEST_F(ContainerSessions, ChainOfEightStaysAndTheNinthLevelIsRefused) {
    const auto unrelated = browse(makeFolder("other"));
    std::vector<JsonObject> chain{browse(nestedZip(10))};
    while (chain.size() < 8)
        chain.push_back(enter(chain.back(), "inner.zip"));
    EXPECT_FALSE(isOpen(unrelated));
    EXPECT_EQ(failureOf([&] { enter(chain.back(), "inner.zip"); }), nestedTooDeep);
    for (const auto& level : chain)
        EXPECT_TRUE(isOpen(level));
    EXPECT_EQ(text(chain.at(2), "path"), path("nested.zip").path() + " / inner.zip / inner.zip");

    const auto parent = browser_->up(text(chain.back(), "token"), never_);
    EXPECT_EQ(text(parent, "token"), text(chain.at(6), "token"));
    EXPECT_FALSE(isOpen(chain.back()));

    browser_->close(text(chain.front(), "token"));
    for (const auto& level : chain) {
        EXPECT_FALSE(isOpen(level));
        EXPECT_FALSE(fs::exists(sessionCache(level).filesystemPath()));
    }
}

TEST_F(ContainerSessions, UpToAClosedParentKeepsTheSession) {
    const auto child = browse(makeFolder("a"), newUuid());
    EXPECT_EQ(text(child, "parentId"), "parent");
    EXPECT_EQ(failureOf([&] { browser_->up(text(child, "token"), never_); }), sessionExpired);
    EXPECT_TRUE(isOpen(child));
}

TEST_F(ContainerSessions, ChangedArchiveIsNoticed) {
    const auto file = write("a.zip", zipOf({{.name = "d/a.txt", .data = "x"}}));
    const auto listing = browse(file);
    fs::last_write_time(file.filesystemPath(), fs::file_time_type::clock::now() - std::chrono::hours(1));
    EXPECT_EQ(failureOf([&] { browser_->refresh(text(listing, "token"), never_); }), archiveChanged);
    EXPECT_EQ(failureOf([&] { open(listing, "d"); }), archiveChanged);
    EXPECT_TRUE(isOpen(listing));
    fs::remove(file.filesystemPath());
    EXPECT_EQ(failureOf([&] { open(listing, "d"); }), "“a.zip” no longer exists.");
}

TEST_F(ContainerSessions, CancelledWorkChangesNothing) {
    makeFolder("dir/sub");
    const auto root = browse(path("dir"));
    const CancellationTest always = [] { return true; };
    const auto& token = text(root, "token");
    EXPECT_EQ(failureOf([&] { browser_->open(token, text(*entryNamed(root, "sub"), "id"), always); }), "cancelled");
    EXPECT_EQ(text(browser_->refresh(token, never_), "path"), path("dir").path());
    EXPECT_EQ(failureOf([&] { browser_->browse(path("dir"), std::nullopt, std::nullopt, always); }), "cancelled");
}

TEST_F(ContainerSessions, SweepTakesOldSessionFoldersOnly) {
    const auto now = fs::file_time_type::clock::now();
    const auto aged = [&](const std::string& name, std::chrono::hours age) {
        const auto folder = makeFolder("cache/ContainerPreviews/" + name);
        write("cache/ContainerPreviews/" + name + "/inside", "x");
        fs::last_write_time(folder.filesystemPath(), now - age);
        return folder;
    };
    const auto old = aged(newUuid(), std::chrono::hours(14 * 24 + 1));
    const auto young = aged(newUuid(), std::chrono::hours(14 * 24 - 1));
    const auto foreign = aged("backup", std::chrono::hours(1'000));
    useReaders(confinedReaders());
    EXPECT_TRUE(fs::exists(old.filesystemPath())) << "nobody waits for the sweep";
    browser_->sweep([] { return true; });
    EXPECT_TRUE(fs::exists(old.filesystemPath()));
    browser_->sweep(never_);
    EXPECT_FALSE(fs::exists(old.filesystemPath()));
    EXPECT_TRUE(fs::exists(young.filesystemPath()));
    EXPECT_TRUE(fs::exists(foreign.filesystemPath()));
}

TEST_F(ContainerSessions, ClosingReachesNothingOutsideTheCache) {
    const auto precious = makeFolder("precious");
    makeFolder("cache/ContainerPreviews");
    browser_->close("../../precious");
    EXPECT_TRUE(fs::exists(precious.filesystemPath()));
    // A cache folder that was replaced by a link is left alone.
    const std::string token = newUuid();
    makeFolder("precious/" + token);
    fs::remove_all(path("cache/ContainerPreviews").filesystemPath());
    fs::create_symlink(precious.path(), path("cache/ContainerPreviews").filesystemPath());
    browser_->close(token);
    EXPECT_TRUE(fs::exists(path("precious/" + token).filesystemPath()));
}

} // namespace
} // namespace quillmere::testing
