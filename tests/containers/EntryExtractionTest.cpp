#include "containers/ContainerMessages.h"
#include "containers/FileFacts.h"
#include "tests/containers/Fixtures.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmere::testing {
namespace {

using namespace messages;
using ::testing::ElementsAre;
namespace fs = std::filesystem;

fs::perms permissionsOf(const FileUrl& file) {
    return fs::symlink_status(file.filesystemPath()).permissions();
}

/// Reads with another reader, then lets a test change what it says.
class ChangedReader : public ArchiveReader {
public:
    using Change = std::function<void(EntryFacts&)>;
    ChangedReader(std::unique_ptr<ArchiveReader> real, Change change)
        : real_(std::move(real)), change_(std::move(change)) {}
    Outcome next(EntryFacts& facts) override {
        const auto outcome = real_->next(facts);
        change_(facts);
        return outcome;
    }
    Outcome skip() override { return real_->skip(); }
    std::optional<size_t> read(std::span<char> buffer) override { return real_->read(buffer); }
    std::optional<std::string> errorText() const override { return real_->errorText(); }

private:
    std::unique_ptr<ArchiveReader> real_;
    Change change_;
};

class EntryExtraction : public ContainerFixture {
protected:
    /// Readers that change the facts only while a listing is made, or only while an entry is extracted.
    void changeFacts(bool extracting, ChangedReader::Change change) {
        useReaders([=](ArchiveRequest request) -> std::unique_ptr<ArchiveReader> {
            const bool applies = request.only.has_value() == extracting;
            auto real = confinedReaders()(std::move(request));
            if (!applies)
                return real;
            return std::make_unique<ChangedReader>(std::move(real), change);
        });
    }
};

TEST_F(EntryExtraction, EntryIsExtractedOnceIntoAPrivatePlace) {
    const auto listing =
        browse(write("a.tar", tarOf({{.name = "a.txt", .data = "first"}, {.name = "b", .data = "2"}})));
    const auto opened = document(listing, "a.txt");
    EXPECT_EQ(opened.name, "a.txt");
    EXPECT_EQ(opened.identity, fileFacts::identity(fileFacts::statusOf(opened.file)));
    EXPECT_EQ(contentsOf(opened.file), "first");
    EXPECT_EQ(opened.file.parent().parent(), sessionCache(listing));
    EXPECT_EQ(permissionsOf(opened.file), fs::perms(0600));
    for (auto folder = opened.file.parent(); folder != folder_; folder = folder.parent())
        EXPECT_EQ(permissionsOf(folder), fs::perms(0700)) << folder.path();

    std::ofstream(opened.file.filesystemPath()) << "marked";
    EXPECT_EQ(contentsOf(document(listing, "a.txt").file), "marked");
    fs::remove(opened.file.filesystemPath());
    EXPECT_EQ(contentsOf(document(listing, "a.txt").file), "first");
    fs::remove(opened.file.filesystemPath());
    fs::create_symlink("/etc/passwd", opened.file.filesystemPath());
    EXPECT_EQ(failureOf([&] { open(listing, "a.txt"); }), itemReplaced);
}

TEST_F(EntryExtraction, LongNamesAreShortened) {
    const std::string longest = std::string(236, 'n') + ".pdf";
    const std::string tooLong = "n" + longest;
    const std::string odd = std::string(230, 'n') + ".abcdefghijklmnopqrst";
    const std::string bare(241, 'n');
    const auto listing = browse(write("a.zip", zipOf({{.name = longest, .data = "x"},
                                                      {.name = tooLong, .data = "x"},
                                                      {.name = odd, .data = "x"},
                                                      {.name = bare, .data = "x"}})));
    const std::pair<std::string, std::string> cases[] = {
        {longest, longest}, {tooLong, "preview.pdf"}, {odd, "preview.abcdefghijklmnop"}, {bare, "preview."}};
    for (const auto& [name, file] : cases) {
        const auto opened = document(listing, name);
        EXPECT_EQ(opened.file.lastPathComponent(), file);
        EXPECT_EQ(opened.name, name);
    }
}

TEST_F(EntryExtraction, ArchivesInsideOpenAsSessions) {
    const auto inner = zipOf({{.name = "note.txt", .data = "deep"}});
    makeFolder("dir");
    write("dir/in.tar", tarOf({{.name = "x/inner.zip", .data = inner}}));
    const auto dir = browse(path("dir"));
    const auto tar = enter(dir, "in.tar");
    EXPECT_EQ(text(tar, "path"), path("dir").path() + " / in.tar");
    EXPECT_EQ(text(tar, "parentId"), "parent");
    const auto zip = enter(enter(tar, "x"), "inner.zip");
    EXPECT_EQ(text(zip, "path"), path("dir").path() + " / in.tar / x/inner.zip");
    EXPECT_EQ(contentsOf(document(zip, "note.txt").file), "deep");
    EXPECT_THAT(namesOf(browser_->up(text(zip, "token"), never_)), ElementsAre("inner.zip"));
    EXPECT_FALSE(fs::exists(sessionCache(zip).filesystemPath()));
}

TEST_F(EntryExtraction, SizesMustBeWhatWasDeclared) {
    const auto bytes = zipOf({{.name = "a", .data = std::string(100, 'a')}});
    for (const auto& [declared, failure] : {std::pair{99, entryTooLong}, {101, entryTruncated}, {100, ""}}) {
        changeFacts(false, [size = declared](EntryFacts& facts) { facts.size = size; });
        const auto listing = browse(write("a.zip", bytes));
        EXPECT_EQ(failureOf([&] { open(listing, "a"); }), failure) << declared;
        const auto cache = sessionCache(listing).filesystemPath();
        EXPECT_EQ(fs::is_empty(cache), *failure != '\0') << declared;
    }
}

TEST_F(EntryExtraction, RawDataIsCappedToo) {
    // 257 MiB of one letter pack small; nothing is declared.
    const auto packed = archiveOf("raw", "lz4", {{.name = "data", .data = std::string(257U << 20U, 'x')}});
    const auto listing = browse(write("large.gz", packed));
    EXPECT_EQ(failureOf([&] { open(listing, "large"); }), entryTooLong);
    EXPECT_TRUE(fs::is_empty(sessionCache(listing).filesystemPath()));
}

TEST_F(EntryExtraction, EntryMustStillBeTheOneListed) {
    const auto bytes = tarOf({{.name = "a", .data = "x"}, {.name = "b", .data = "y"}});
    const std::pair<const char*, ChangedReader::Change> changes[] = {
        {"path", [](EntryFacts& facts) { facts.name = "c"; }},
        {"type", [](EntryFacts& facts) { facts.type = S_IFDIR; }},
        {"symbolic link", [](EntryFacts& facts) { facts.symbolicLink = true; }},
        {"hard link", [](EntryFacts& facts) { facts.hardLink = true; }},
        {"encrypted", [](EntryFacts& facts) { facts.encrypted = true; }},
        {"size", [](EntryFacts& facts) { facts.size = 268'435'457; }},
    };
    for (const auto& [label, change] : changes) {
        changeFacts(true, change);
        const auto listing = browse(write("a.tar", bytes));
        EXPECT_EQ(failureOf([&] { open(listing, "b"); }), entryChanged) << label;
    }
}

TEST_F(EntryExtraction, ArchiveThatShrankUnseenHasNoEntry) {
    const auto file = write("a.tar", tarOf({{.name = "a", .data = "x"}, {.name = "b", .data = "y"}}));
    const auto when = fs::last_write_time(file.filesystemPath());
    const auto listing = browse(file);
    // Same file, size and time: only the content tells.
    std::string shrunk = tarOf({{.name = "a", .data = "x"}});
    shrunk.resize(fs::file_size(file.filesystemPath()));
    write("a.tar", shrunk);
    fs::last_write_time(file.filesystemPath(), when);
    EXPECT_EQ(failureOf([&] { open(listing, "b"); }), entryGone);
}

TEST_F(EntryExtraction, ArchiveThatChangesMeanwhileIsNotServed) {
    const auto bytes = zipOf({{.name = "a", .data = std::string(200'000, 'a')}});
    const auto file = path("a.zip").filesystemPath();
    const struct {
        const char* label;
        std::function<void()> change;
        std::string failure;
    } changes[] = {{"shrinks", [&] { fs::resize_file(file, 100'000); }, archiveChanged},
                   {"vanishes", [&] { fs::remove(file); }, "“a.zip” no longer exists."},
                   {"becomes a link",
                    [&] { fs::rename(file, file.native() + "2"), fs::create_symlink("a.zip2", file); },
                    archiveChanged}};
    for (const auto& [label, change, failure] : changes) {
        SCOPED_TRACE(label);
        const auto browsed = [&] {
            fs::remove(file);
            return browse(write("a.zip", bytes));
        };
        useReaders(confinedReaders());
        const auto listing = browsed();
        change();
        EXPECT_EQ(failureOf([&] { open(listing, "a"); }), failure);
        // The same while the entry is being read.
        changeFacts(true, [&act = change](EntryFacts&) { act(); });
        const auto again = browsed();
        const auto late = failureOf([&] { open(again, "a"); });
        EXPECT_TRUE(late == failure || late.starts_with(readFailurePrefix)) << late;
        EXPECT_TRUE(fs::is_empty(sessionCache(again).filesystemPath()));
    }
}

TEST_F(EntryExtraction, DamagedDataFailsAndLeavesNothing) {
    std::string bytes = archiveOf("zip", "none", {{.name = "a", .data = std::string(50'000, 'a')}});
    bytes.replace(60, 4, "\xff\xff\xff\xff");
    const auto listing = browse(write("a.zip", bytes));
    EXPECT_THAT(failureOf([&] { open(listing, "a"); }), ::testing::StartsWith(readFailurePrefix));
    EXPECT_TRUE(fs::is_empty(sessionCache(listing).filesystemPath()));
}

TEST_F(EntryExtraction, CacheThatCannotBeWrittenIsReported) {
    const auto listing = browse(write("a.zip", zipOf({{.name = "a", .data = "x"}})));
    const auto elsewhere = makeFolder("elsewhere");
    makeFolder("cache");
    fs::create_symlink(elsewhere.path(), path("cache/ContainerPreviews").filesystemPath());
    EXPECT_NE(failureOf([&] { open(listing, "a"); }), "");
    EXPECT_TRUE(fs::is_empty(elsewhere.filesystemPath()));

    fs::remove(path("cache/ContainerPreviews").filesystemPath());
    const auto& id = text(*entryNamed(listing, "a"), "id");
    makeFolder("cache/ContainerPreviews/" + text(listing, "token") + "/" + id + "/a");
    EXPECT_EQ(failureOf([&] { open(listing, "a"); }), cacheNotCreated);
}

TEST_F(EntryExtraction, CacheThatOthersCanChangeIsRefused) {
    constexpr uid_t somebody = 65'534;
    const auto listing = browse(write("a.zip", zipOf({{.name = "a", .data = "x"}})));
    const std::string session = "cache/ContainerPreviews/" + text(listing, "token");
    for (const std::string& folder : {std::string("cache/ContainerPreviews"), session}) {
        SCOPED_TRACE(folder);
        const auto place = makeFolder(folder).filesystemPath();
        for (const auto writable : {fs::perms::group_write, fs::perms::others_write}) {
            fs::permissions(place, fs::perms::owner_all | writable);
            EXPECT_EQ(failureOf([&] { open(listing, "a"); }), cacheNotCreated);
        }
        fs::permissions(place, fs::perms::owner_all);
        if (::geteuid() != 0)
            continue; // only root can give a folder away
        ASSERT_EQ(::chown(place.c_str(), somebody, somebody), 0);
        EXPECT_EQ(failureOf([&] { open(listing, "a"); }), cacheNotCreated);
        ASSERT_EQ(::chown(place.c_str(), 0, 0), 0);
    }
    EXPECT_EQ(contentsOf(document(listing, "a").file), "x");
}

/// No file may grow beyond this, as on a disk that is full then.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &before_), 0);
        const rlimit lower{.rlim_cur = bytes, .rlim_max = before_.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &lower), 0);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    rlimit before_{};
    void (*handler_)(int);
};

TEST_F(EntryExtraction, EntryThatCannotBeWrittenLeavesNothing) {
    const auto listing = browse(write("a.zip", zipOf({{.name = "a", .data = std::string(300'000, 'a')}})));
    {
        const FileSizeLimit limit(100'000);
        EXPECT_EQ(failureOf([&] { open(listing, "a"); }), "“a” is too large.");
    }
    EXPECT_TRUE(fs::is_empty(sessionCache(listing).filesystemPath()));
    EXPECT_EQ(contentsOf(document(listing, "a").file).size(), 300'000U);
}

TEST_F(EntryExtraction, UnknownIdsAndTokens) {
    const auto listing = browse(makeFolder("dir"));
    EXPECT_EQ(failureOf([&] { browser_->open(text(listing, "token"), "nothing", never_); }), itemGone);
    EXPECT_EQ(failureOf([&] { browser_->open("nothing", "nothing", never_); }), sessionExpired);
}

} // namespace
} // namespace quillmere::testing
