#include "containers/ConfinedArchiveReader.h"
#include "containers/ContainerMessages.h"
#include "helpers/archive-reader/LibarchiveReader.h"
#include "helpers/archive-reader/Lockdown.h"
#include "tests/containers/Fixtures.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <linux/futex.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace quillmere::testing {
namespace {

using namespace messages;
namespace fs = std::filesystem;

const std::string unreadable = std::string(readFailurePrefix) + corruptOrUnsupported;

class ConfinedReader : public ContainerFixture {
protected:
    void useLiar() { useReaders(ConfinedArchiveReader::factory(FileUrl(LYING_READER))); }
    /// A program that counts its starts; from the second on it is what the script says.
    void useLaterStarts(const std::string& script) {
        write("starts", "");
        const FileUrl program =
            write("program", "#!/bin/sh\necho >>" + path("starts").path() + "\n[ $(wc -l <" + path("starts").path() +
                                 ") != 2 ] || { " + script + "; }\nexec " LYING_READER "\n");
        fs::permissions(program.filesystemPath(), fs::perms::owner_all);
        useReaders(ConfinedArchiveReader::factory(program));
    }
    size_t starts() const { return contentsOf(path("starts")).size(); }
    /// From half a second on, the reading time is over.
    void expireSoon() {
        clock_ = [start = steadyNow()] {
            const auto now = steadyNow();
            return now - start > std::chrono::milliseconds(500) ? now + std::chrono::seconds(31) : now;
        };
    }
    std::string failureOfListing(std::string_view bytes, const char* name = "a.zip") {
        return failureOf([&] { browse(write(name, bytes)); });
    }
};

bool waitUntil(const std::function<bool()>& condition) {
    const auto deadline = steadyNow() + std::chrono::seconds(10);
    while (!condition() && steadyNow() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return condition();
}

/// All that a reader with the given environment (ours when absent) says about an archive.
std::string answersOf(const char* program, const std::optional<std::vector<std::string>>& environment,
                      const FileUrl& archive) {
    int sockets[2];
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets), 0);
    const FileDescriptor ours(sockets[0]);
    FileDescriptor theirs(sockets[1]);
    auto pipe = platform::makePipe();
    platform::ProcessSpec spec{.executable = FileUrl(program)};
    spec.environment = environment;
    spec.descriptors = {{.ours = theirs.get(), .theirs = 0}, {.ours = pipe.writeEnd.get(), .theirs = 1}};
    platform::ChildProcess process(spec);
    pipe.writeEnd.reset();
    EXPECT_TRUE(archiveProtocol::sendRequest(ours.get(), {.file = openArchive(archive)}));
    std::string answers(65'536, ' ');
    const ssize_t count = ::read(pipe.readEnd.get(), answers.data(), answers.size());
    process.wait();
    return answers.substr(0, count < 0 ? 0 : static_cast<size_t>(count));
}

/// The processes whose program is the given one.
std::vector<pid_t> processesOf(const char* program) {
    std::vector<pid_t> found;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        std::error_code error;
        const auto target = fs::read_symlink(entry.path() / "exe", error);
        if (!error && target == fs::path(program))
            found.push_back(std::stoi(entry.path().filename()));
    }
    return found;
}

TEST_F(ConfinedReader, LiesEndInTheReadFailure) {
    useLiar();
    for (const char* lie : {"crash at once", "crash in the middle", "half a frame", "huge length", "garbage",
                            "wrong order", "data while listing", "no end", ""})
        EXPECT_EQ(failureOfListing(lie), unreadable) << lie;
    EXPECT_EQ(failureOfListing("endless entries"), tooManyEntries);
    EXPECT_EQ(failureOfListing("climbing name"), unsafePath);
}

TEST_F(ConfinedReader, LiesWhileExtractingLeaveNothing) {
    useLiar();
    const std::pair<const char*, std::string> lies[] = {
        {"extract nothing", unreadable},   {"extract other", entryChanged},      {"extract endless", entryTooLong},
        {"extract short", entryTruncated}, {"extract header again", unreadable}, {"extract broken off", unreadable}};
    for (const auto& [lie, failure] : lies) {
        const auto listing = browse(write("a.zip", lie));
        EXPECT_EQ(failureOf([&] { open(listing, "a"); }), failure) << lie;
        const auto cache = sessionCache(listing).filesystemPath();
        EXPECT_TRUE(!fs::exists(cache) || fs::is_empty(cache)) << lie;
    }
}

TEST_F(ConfinedReader, DataThatIsNotPassedOver) {
    useLiar();
    EXPECT_THAT(namesOf(browse(write("a.zip", "root not passed over"))), ::testing::ElementsAre("a"));
    EXPECT_EQ(failureOfListing("entry not passed over"), std::string(readFailurePrefix) + "no way over");
}

TEST_F(ConfinedReader, SilenceLastsAsLongAsTheReadingTime) {
    useLiar();
    expireSoon();
    EXPECT_EQ(failureOfListing("silent"), tookTooLong);
}

TEST_F(ConfinedReader, ReadersThatNeverBeginAreNotTheArchivesFault) {
    useLiar();
    EXPECT_EQ(failureOfListing("never answers"), readerNotCreated);
    EXPECT_EQ(failureOfListing("answers nonsense"), readerNotCreated);
    for (const char* program : {"/bin/false", "/no/such/program", "/etc/passwd"}) {
        useReaders(ConfinedArchiveReader::factory(FileUrl(program)));
        EXPECT_EQ(failureOfListing(zipOf({})), readerNotCreated) << program;
    }
}

TEST_F(ConfinedReader, OneThatStoodReadyAndDiesOverTheRequestIsReplaced) {
    useLaterStarts("sleep 0.3; exit 3");
    failureOfListing("no end");
    ASSERT_TRUE(waitUntil([&] { return starts() == 2; }));
    // It takes the request into its socket and is gone before it reads it.
    EXPECT_THAT(namesOf(browse(write("a.zip", "extract short"))), ::testing::ElementsAre("a"));
    EXPECT_GE(starts(), 3U);
}

TEST_F(ConfinedReader, CancellationEndsTheWait) {
    useLiar();
    clock_ = [now = steadyNow()] { return now; }; // the reading time never ends
    for (const char* lie : {"mute", "silent"}) {
        const auto start = steadyNow();
        const auto file = write("a.zip", lie);
        std::atomic<bool> cancelled = false;
        std::thread canceller([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            cancelled = true;
        });
        EXPECT_EQ(
            failureOf([&] { browser_->browse(file, std::nullopt, std::nullopt, [&] { return cancelled.load(); }); }),
            "cancelled");
        canceller.join();
        EXPECT_LT(steadyNow() - start, std::chrono::seconds(5)) << lie;
    }
}

TEST_F(ConfinedReader, ArchivesThatNeverEndAreStopped) {
    // One file is linked twice to the same place, which makes a ring of the reader's list.
    const std::string ring = xarOf("<?xml version=\"1.0\"?><xar><toc>"
                                   "<file id=\"1\"><name>a</name><type link=\"original\">file</type></file>"
                                   "<file id=\"2\"><name>b</name><type link=\"1\">hardlink</type>"
                                   "<type link=\"1\">hardlink</type></file></toc></xar>");
    for (const auto& [label, bytes] : {std::pair{"xar", ring}, {"iso", isoWithLoop()}}) {
        SCOPED_TRACE(label);
        expireSoon();
        EXPECT_EQ(failureOfListing(bytes), tookTooLong);
        clock_ = steadyNow;
        int polls = 0;
        EXPECT_EQ(failureOf([&] {
                      browser_->browse(path("a.zip"), std::nullopt, std::nullopt, [&] { return ++polls > 20; });
                  }),
                  "cancelled");
    }
}

TEST_F(ConfinedReader, CancelledExtractionLeavesNothing) {
    useLiar();
    const auto listing = browse(write("a.zip", "extract slowly"));
    int polls = 0;
    EXPECT_EQ(failureOf([&] {
                  browser_->open(text(listing, "token"), text(*entryNamed(listing, "a"), "id"),
                                 [&] { return ++polls > 10; });
              }),
              "cancelled");
    EXPECT_TRUE(fs::is_empty(sessionCache(listing).filesystemPath()));
}

TEST_F(ConfinedReader, OneProcessStandsReadyAndMayDie) {
    useLiar();
    const auto before = processesOf(LYING_READER).size();
    // Starting and ending take a moment.
    const auto becomes = [&](size_t count) {
        return waitUntil([&] { return processesOf(LYING_READER).size() == count; });
    };
    for (int i = 0; i < 3; ++i)
        failureOfListing("crash at once");
    ASSERT_TRUE(becomes(before + 1));
    for (const pid_t process : processesOf(LYING_READER))
        ::kill(process, SIGKILL);
    ASSERT_TRUE(becomes(0));
    const auto listing = browse(write("a.zip", "extract short"));
    EXPECT_TRUE(entryNamed(listing, "a")) << "a reader that died while it waited is replaced";
}

TEST_F(ConfinedReader, IsTheFirstToGoWhenMemoryEnds) {
    browse(write("a.zip", zipOf({})));
    const auto score = [] {
        const auto readers = processesOf(ARCHIVE_READER);
        return readers.empty() ? ""
                               : contentsOf(FileUrl("/proc/" + std::to_string(readers.front()) + "/oom_score_adj"));
    };
    EXPECT_TRUE(waitUntil([&] { return score() == "1000\n"; }));
}

/// What the locked-down process may still do: one letter per question, y or n.
std::string allowedWhenLockedDown() {
    auto pipe = platform::makePipe();
    const pid_t child = ::fork();
    if (child == 0) {
        uint32_t word = 0;
        const auto futex = [&](int operation) { return ::syscall(SYS_futex, &word, operation, 1, nullptr) >= 0; };
        const bool isLocked = lockDown();
        const bool answers[] = {isLocked,
                                futex(FUTEX_WAKE),
                                futex(FUTEX_WAKE_PRIVATE),
                                futex(FUTEX_LOCK_PI),
                                ::open("/dev/null", O_RDONLY | O_CLOEXEC) >= 0,
                                ::socket(AF_UNIX, SOCK_STREAM, 0) >= 0,
                                ::fork() >= 0};
        std::string letters;
        for (const bool answer : answers)
            letters += answer ? 'y' : 'n';
        ::_exit(writeAll(pipe.writeEnd.get(), letters) ? 0 : 1);
    }
    pipe.writeEnd.reset();
    std::string letters(32, ' ');
    const ssize_t count = ::read(pipe.readEnd.get(), letters.data(), letters.size());
    ::waitpid(child, nullptr, 0);
    return letters.substr(0, count < 0 ? 0 : static_cast<size_t>(count));
}

TEST(ReaderLockdown, LeavesReadingAndLocks) {
    EXPECT_EQ(allowedWhenLockedDown(), "yyynnnn");
}

TEST_F(ConfinedReader, NamesInOtherCharacterSets) {
    // Code pages as LHA archives name them, and what they make of their bytes.
    const struct {
        uint32_t codePage;
        const char* bytes;
        const char* name;
    } rows[] = {{932, "\x93\xFA\x96\x7B\x8C\xEA.txt", "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E.txt"},
                {437, "\x84.txt", "\xC3\xA4.txt"},
                {850, "\x9B.txt", "\xC3\xB8.txt"},
                {866, "\x9F.txt", "\xD0\xAF.txt"},
                {1252, "\x80.txt", "\xE2\x82\xAC.txt"}};
    for (const auto& [codePage, bytes, name] : rows) {
        const auto archive = write("a.zip", lhaOf(bytes, "content", codePage));
        for (const bool inProcess : {false, true}) {
            useReaders(inProcess ? LibarchiveReader::factory() : confinedReaders());
            EXPECT_EQ(failureOf([&] {
                          const auto listing = browse(archive);
                          EXPECT_THAT(namesOf(listing), ::testing::ElementsAre(name));
                          EXPECT_EQ(contentsOf(document(listing, name).file), "content");
                      }),
                      "")
                << codePage;
        }
    }
}

TEST_F(ConfinedReader, FilterProgramsAreNotStarted) {
    const auto programs = makeFolder("programs");
    const auto witness = path("witness");
    write("programs/lzop", "#!/bin/sh\ntouch " + witness.path() + "\n");
    fs::permissions(path("programs/lzop").filesystemPath(), fs::perms::owner_all);
    const std::string before = getenv("PATH");
    setenv("PATH", (programs.path() + ":" + before).c_str(), 1);
    EXPECT_THAT(failureOfListing(std::string("\x89LZO\x00\x0d\x0a\x1a\x0a 1234567890", 20)),
                ::testing::StartsWith(readFailurePrefix));
    // The same with the program itself given that path.
    const auto answers = answersOf(ARCHIVE_READER, std::nullopt, path("a.zip"));
    EXPECT_FALSE(answers.empty());
    setenv("PATH", before.c_str(), 1);
    EXPECT_FALSE(fs::exists(witness.filesystemPath()));
}

} // namespace
} // namespace quillmere::testing
