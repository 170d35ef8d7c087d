#include "containers/ConfinedFolder.h"
#include "containers/ContainerMessages.h"
#include "containers/FileFacts.h"
#include "tests/containers/Fixtures.h"
#include "tests/support/OrdinaryUser.h"

#include <atomic>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace quillmere::testing {
namespace {

using namespace messages;
using ::testing::ElementsAre;
namespace fs = std::filesystem;

/// What the next listings repeat: some file systems name an entry twice when the folder changes meanwhile.
std::string repeatedName;

class RepeatedName {
public:
    explicit RepeatedName(const char* name) { repeatedName = name; }
    ~RepeatedName() { repeatedName.clear(); }
};

class FolderListings : public ContainerFixture {};

TEST_F(FolderListings, PathsStayInside) {
    const FileUrl dir = makeFolder("dir/a/b");
    makeFolder("outside");
    fs::create_symlink(path("outside").path(), path("dir/out").filesystemPath());
    fs::create_symlink("a", path("dir/sibling").filesystemPath());
    const struct {
        const char* relative;
        const char* failure;
    } cases[] = {{"", ""},
                 {"a/b", ""},
                 {"a/../a", ""},
                 {"..", linksOutside},
                 {"a/../..", linksOutside},
                 {"../dirt", linksOutside},
                 {"out", linksOutside},
                 {"sibling", linksOutside},
                 {"sibling/b", linksOutside},
                 {"gone", "“gone” no longer exists."}};
    for (const auto& [relative, failure] : cases)
        EXPECT_EQ(failureOf([&, at = relative] { confinedPlace(path("dir"), at, fileFacts::Handle::place); }), failure)
            << relative;
    EXPECT_EQ(confinedUrl(FileUrl("/"), "etc").path(), "/etc");
    EXPECT_EQ(confinedPlace(FileUrl("/"), "etc", fileFacts::Handle::place).url.path(), "/etc");
}

TEST_F(FolderListings, WalkingFindsTheSameLinksAsTheKernel) {
    makeFolder("dir/a/b");
    write("dir/a/b/file", "x");
    fs::create_symlink("b/file", path("dir/a/link").filesystemPath());
    fs::create_symlink("a", path("dir/linked").filesystemPath());
    const auto root = fileFacts::openWithoutLinks(path("dir"), fileFacts::Handle::place);
    for (const char* relative : {"", "a", "a/b/file", "a/link", "linked", "linked/b", "a/none", "a/b/file/x"})
        for (const auto handle : {fileFacts::Handle::place, fileFacts::Handle::contents, fileFacts::Handle::folder})
            EXPECT_EQ(failureOf([&] { fileFacts::walkBelow(root, relative, handle, path("dir")); }),
                      failureOf([&] { fileFacts::openBelow(root, relative, handle, path("dir")); }))
                << relative;
}

TEST_F(FolderListings, EntriesThatCannotBeOpenedSayWhy) {
    makeFolder("dir");
    write("dir/.hidden", "");
    write("dir/bad\xff.txt", "bytes");
    fs::create_symlink("/etc", path("dir/link").filesystemPath());
    ASSERT_EQ(mkfifo(path("dir/pipe").path().c_str(), 0600), 0);
    const auto listing = browse(path("dir"));
    EXPECT_THAT(namesOf(listing), ::testing::UnorderedElementsAre(".hidden", "bad\xEF\xBF\xBD.txt", "link", "pipe"));
    EXPECT_EQ(text(*entryNamed(listing, "link"), "blockedReason"), blockedLink);
    EXPECT_EQ(failureOf([&] { open(listing, "link"); }), blockedLink);
    EXPECT_EQ(failureOf([&] { open(listing, "pipe"); }), blockedSpecial);
    EXPECT_TRUE(compactJson(listing));
    // A name that is not text can be shown and opened all the same.
    EXPECT_EQ(contentsOf(document(listing, "bad\xEF\xBF\xBD.txt").file), "bytes");
}

TEST_F(FolderListings, UnreadableEntryIsBlocked) {
    makeFolder("dir/sub");
    write("dir/sub/file", "x");
    fs::permissions(write("dir/locked.zip", zipOf({})).filesystemPath(), fs::perms::none);
    const tests::OrdinaryUser user(folder_);
    const auto root = browse(path("dir"));
    EXPECT_THAT(failureOf([&] { open(root, "locked.zip"); }), ::testing::StartsWith(readFailurePrefix));
    fs::permissions(path("dir/sub").filesystemPath(), fs::perms::owner_read);
    const auto sub = enter(root, "sub");
    EXPECT_EQ(text(*entryNamed(sub, "file"), "blockedReason"), blockedUnavailable);
    fs::permissions(path("dir/sub").filesystemPath(), fs::perms::none);
    EXPECT_EQ(failureOf([&] { browser_->refresh(text(sub, "token"), never_); }),
              "You do not have permission to open “sub”.");
    fs::permissions(path("dir/sub").filesystemPath(), fs::perms::owner_all);
}

TEST_F(FolderListings, TenThousandEntriesAreTheMost) {
    const FileUrl dir = makeFolder("dir");
    const FileDescriptor folder(::open(dir.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto touch = [&](int number) {
        const FileDescriptor file(
            ::openat(folder.get(), std::to_string(number).c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
        ASSERT_TRUE(static_cast<bool>(file));
    };
    for (int i = 0; i < 10'000; ++i)
        touch(i);
    EXPECT_EQ(namesOf(browse(dir)).size(), 10'000U);
    touch(10'000);
    EXPECT_EQ(failureOf([&] { browse(dir); }), folderTooLarge);
}

TEST_F(FolderListings, EntryThatIsNamedTwiceIsOneEntry) {
    makeFolder("dir/sub");
    write("dir/a.txt", "x");
    for (const char* name : {"a.txt", "sub"}) {
        const RepeatedName repeated(name);
        const auto listing = browse(path("dir"));
        EXPECT_THAT(namesOf(listing), ElementsAre("sub", "a.txt")) << name;
        EXPECT_EQ(contentsOf(document(listing, "a.txt").file), "x");
        EXPECT_EQ(text(*entryNamed(browser_->refresh(text(listing, "token"), never_), name), "id"),
                  text(*entryNamed(listing, name), "id"));
    }
}

TEST_F(FolderListings, OnlyFoldersAreOpenedForTheirNames) {
    makeFolder("dir");
    ASSERT_EQ(mkfifo(path("dir/pipe").path().c_str(), 0600), 0);
    fs::create_symlink("..", path("dir/link").filesystemPath());
    const FileDescriptor watch(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    ASSERT_GE(::inotify_add_watch(watch.get(), path("dir/pipe").path().c_str(), IN_OPEN), 0);
    const auto root = fileFacts::openWithoutLinks(path("dir"), fileFacts::Handle::folder);
    const auto place = path("dir");
    EXPECT_THROW(fileFacts::openBelow(root, "pipe", fileFacts::Handle::folder, place), fs::filesystem_error);
    EXPECT_THROW(fileFacts::walkBelow(root, "pipe", fileFacts::Handle::folder, place), fs::filesystem_error);
    char event[512];
    EXPECT_LT(::read(watch.get(), event, sizeof event), 0) << "opening a device may set it going";
}

TEST_F(FolderListings, IdsLiveWhileTheirFolderIsTheOneListed) {
    makeFolder("dir/a/b");
    const auto root = browse(path("dir"));
    const auto a = enter(root, "a");
    EXPECT_EQ(failureOf([&] { open(root, "a"); }), itemGone);
    const auto again = browser_->refresh(text(a, "token"), never_);
    EXPECT_EQ(text(*entryNamed(again, "b"), "id"), text(*entryNamed(a, "b"), "id"));
    enter(again, "b");
    const auto back = browser_->up(text(a, "token"), never_);
    EXPECT_NE(text(*entryNamed(back, "b"), "id"), text(*entryNamed(a, "b"), "id"));
}

TEST_F(FolderListings, NamesThatOnlyLookAlikeAreDifferentEntries) {
    const std::vector<std::string> names{"\xC3\xA4.txt", "a\xCC\x88.txt", "\xC3\x84.txt", "b.TXT", "B.txt"};
    makeFolder("dir");
    std::vector<TarMember> members;
    for (const auto& name : names) {
        write("dir/" + name, name);
        members.push_back({.name = name, .data = name});
    }
    for (const auto& listing : {browse(path("dir")), browse(write("a.tar", tarOf(members)))}) {
        EXPECT_THAT(namesOf(listing), ::testing::UnorderedElementsAreArray(names));
        for (const auto& name : names)
            EXPECT_EQ(contentsOf(document(listing, name).file), name);
    }
}

TEST_F(FolderListings, ReplacedItemsAreNotServed) {
    makeFolder("dir/sub");
    write("dir/file.txt", "x");
    const auto root = browse(path("dir"));
    fs::remove(path("dir/file.txt").filesystemPath());
    EXPECT_EQ(failureOf([&] { open(root, "file.txt"); }), "“file.txt” no longer exists.");
    makeFolder("dir/file.txt");
    EXPECT_EQ(failureOf([&] { open(root, "file.txt"); }), itemReplaced);
    fs::remove(path("dir/file.txt").filesystemPath());
    fs::create_symlink("/etc/passwd", path("dir/file.txt").filesystemPath());
    EXPECT_EQ(failureOf([&] { open(root, "file.txt"); }), linksOutside);
    fs::remove(path("dir/sub").filesystemPath());
    fs::create_symlink("/etc", path("dir/sub").filesystemPath());
    EXPECT_EQ(failureOf([&] { open(root, "sub"); }), linksOutside);
    fs::rename(path("dir").filesystemPath(), path("moved").filesystemPath());
    EXPECT_EQ(failureOf([&] { browser_->refresh(text(root, "token"), never_); }), "“dir” no longer exists.");
}

/// Swaps what stands at a name for a link to somewhere else and back, as fast as it can.
class Swapper {
public:
    Swapper(const FileUrl& name, const FileUrl& target) : name_(name.path()), aside_(name.path() + ".aside") {
        fs::create_symlink(target.path(), aside_);
        thread_ = std::thread([this] {
            while (!stop_)
                swap();
        });
    }
    ~Swapper() {
        stop_ = true;
        thread_.join();
    }

private:
    void swap() const { ::renameat2(AT_FDCWD, name_.c_str(), AT_FDCWD, aside_.c_str(), RENAME_EXCHANGE); }

    std::string name_;
    std::string aside_;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

TEST_F(FolderListings, SwappingForALinkNeverReachesOutside) {
    const auto inside = zipOf({{.name = "inside", .data = "x"}});
    const auto outside = zipOf({{.name = "outside", .data = "x"}});
    makeFolder("dir/sub");
    makeFolder("elsewhere");
    write("dir/sub/a.zip", inside);
    write("dir/b.txt", "inside");
    write("elsewhere/a.zip", outside);
    const auto checked = fileFacts::identity(fileFacts::statusOf(path("dir/b.txt")));
    const auto listing = browse(path("dir"));
    write("dir/c.zip", inside);
    const auto withArchive = browse(path("dir"));
    int served = 0;
    {
        const Swapper archive(path("dir/c.zip"), path("elsewhere"));
        const Swapper file(path("dir/b.txt"), path("elsewhere/a.zip"));
        const Swapper parent(path("dir/sub"), path("elsewhere"));
        for (int round = 0; round < 10'000; ++round) {
            try {
                const auto opened = document(listing, "b.txt");
                EXPECT_EQ(opened.identity, checked);
                ++served;
            } catch (const ContainerError&) {
            } catch (const fs::filesystem_error&) {
            }
            try {
                const auto sub = browser_->browse(path("dir/sub"), std::nullopt, std::nullopt, never_);
                EXPECT_THAT(namesOf(sub), ElementsAre("a.zip"));
                browser_->close(*stringField(sub, "token")); // or it would push the first session out
            } catch (const ContainerError&) {
            } catch (const fs::filesystem_error&) {
            }
            if (round % 16 != 0)
                continue; // archives take longer
            try {
                const auto nested = enter(withArchive, "c.zip");
                EXPECT_THAT(namesOf(nested), ElementsAre("inside"));
                browser_->close(*stringField(nested, "token"));
            } catch (const ContainerError&) {
            } catch (const fs::filesystem_error&) {
            }
        }
    }
    EXPECT_GT(served, 0);
}

TEST_F(FolderListings, SwappingTheCacheNeverReachesOutside) {
    makeFolder("elsewhere");
    const auto secret = fileFacts::identity(fileFacts::statusOf(write("elsewhere/a.txt", "secret")));
    const auto listing = browse(write("a.zip", zipOf({{.name = "a.txt", .data = "inside"}})));
    const auto extracted = document(listing, "a.txt").file;
    const Swapper entryFolder(extracted.parent(), path("elsewhere"));
    for (int round = 0; round < 10'000; ++round) {
        try {
            EXPECT_NE(document(listing, "a.txt").identity, secret);
        } catch (const ContainerError&) {
        } catch (const fs::filesystem_error&) {
        }
    }
    EXPECT_EQ(contentsOf(path("elsewhere/a.txt")), "secret");
}

} // namespace

/// In place of the C library's: says the repeated name twice.
extern "C" dirent* readdir(DIR* folder) {
    static const auto real = reinterpret_cast<dirent* (*)(DIR*)>(::dlsym(RTLD_NEXT, "readdir"));
    static dirent* again = nullptr;
    if (again)
        return std::exchange(again, nullptr);
    dirent* entry = real(folder);
    if (entry && entry->d_name == repeatedName)
        again = entry;
    return entry;
}

} // namespace quillmere::testing
