#include "platform/common/ChildProcess.h"

#include "base/Errors.h"
#include "base/Uuid.h"
#include "platform/common/EndOfProgram.h"
#include "platform/common/ProcessRegistry.h"
#include "platform/common/TemporaryFolder.h"
#include "platform/common/ThreadPool.h"
#include "tests/platform/common/Processes.h"
#include "tests/support/Sandbox.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <latch>
#include <thread>

namespace quillmere {
namespace {

using platform::ChildProcess;
using platform::ProcessSpec;
using tests::eventually;
using tests::processesNaming;
using tests::Sandbox;
namespace ProcessRegistry = platform::ProcessRegistry;

ProcessSpec standIn(std::vector<std::string> arguments) {
    return {.executable = FileUrl(STAND_IN), .arguments = std::move(arguments)};
}

std::string readAll(int descriptor) {
    std::string text;
    char block[4096];
    for (ssize_t count = 0; (count = ::read(descriptor, block, sizeof block)) > 0;)
        text.append(block, static_cast<size_t>(count));
    return text;
}

std::string outputOf(ProcessSpec spec) {
    auto pipe = platform::makePipe();
    spec.descriptors.push_back({.ours = pipe.writeEnd.get(), .theirs = 1});
    ChildProcess child(spec);
    pipe.writeEnd.reset();
    std::string text = readAll(pipe.readEnd.get());
    EXPECT_TRUE(child.wait().isSuccess());
    return text;
}

TEST(ChildProcess, GetsArgumentsAndEnvironmentExactlyAsGiven) {
    ProcessSpec spec = standIn({"do:print", "", "two words", "$HOME `ls` \"quoted\" *", "-dash", "\xff\xfe%s\nline"});
    spec.environment = {"ONLY=this"};
    EXPECT_EQ(outputOf(spec), "do:print\n\ntwo words\n$HOME `ls` \"quoted\" *\n-dash\n\xff\xfe%s\nline\nONLY=this\n");
}

TEST(ChildProcess, InheritsNothingButWhatIsPassedOn) {
    const FileDescriptor leaky(::open("/dev/null", O_RDONLY)); // without close-on-exec, as libraries leave them
    EXPECT_EQ(outputOf(standIn({"do:descriptors"})), "0\n1\n2\n");
}

TEST(ChildProcess, SpeaksOverPassedPipesWhoseNumbersCross) {
    auto in = platform::makePipe();
    auto out = platform::makePipe();
    auto extra = platform::makePipe();
    // The child reports under a number that is taken here by what it knows as its standard input.
    const int crossing = in.readEnd.get();
    ProcessSpec spec = standIn({"do:report=" + std::to_string(crossing) + " copy"});
    spec.descriptors = {{crossing, 0}, {out.writeEnd.get(), 1}, {extra.writeEnd.get(), crossing}};
    ChildProcess child(spec);
    for (auto* end : {&in.readEnd, &out.writeEnd, &extra.writeEnd})
        end->reset();
    EXPECT_EQ(::write(in.writeEnd.get(), "through", 7), 7);
    in.writeEnd.reset();
    EXPECT_EQ(readAll(out.readEnd.get()), "through");
    EXPECT_EQ(readAll(extra.readEnd.get()), "here\n");
    EXPECT_TRUE(child.wait().isSuccess());
}

TEST(ChildProcess, LaunchFailuresNameTheProgram) {
    const Sandbox sandbox;
    const FileUrl text = sandbox.writeProgram("no program", "plain text");
    for (const auto& [file, sentence] : {std::pair{sandbox.at("missing"), "“missing” no longer exists."},
                                         {text, "“no program” could not be opened."},
                                         {sandbox.at("no program/below"), "“below” no longer exists."}}) {
        try {
            const ChildProcess child(ProcessSpec{.executable = file});
            ADD_FAILURE() << file.path() << " started";
        } catch (const std::filesystem::filesystem_error& error) {
            EXPECT_EQ(error.path1(), file.filesystemPath());
            EXPECT_EQ(userMessage(error), sentence);
        }
    }
}

TEST(ChildProcess, NothingOfItsGroupOutlivesIt) {
    const struct {
        const char* name;
        const char* script;
    } rows[] = {
        {"dropped while running", "do:fork sleep"},
        {"dropped, deaf to requests", "do:ignore-term fork sleep"},
        {"ended by itself, its second process runs on", "do:fork"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string mark = newUuid();
        {
            ChildProcess child(standIn({row.script, mark}));
            if (std::string_view(row.script).ends_with("sleep")) {
                EXPECT_TRUE(eventually([&] { return processesNaming(mark) == 2; }));
                EXPECT_FALSE(child.waitUntil(steadyNow()));
                EXPECT_FALSE(child.exitStatus());
            } else {
                EXPECT_TRUE(child.wait().isSuccess());
            }
        }
        EXPECT_TRUE(eventually([&] { return processesNaming(mark) == 0; }));
    }
}

TEST(ChildProcess, TellsHowItEndedAndHoldsItsLimits) {
    const Sandbox sandbox;
    const struct {
        const char* script;
        platform::ResourceLimits limits;
        platform::ExitStatus expected;
    } rows[] = {
        {"do:", {}, {0, 0}},
        {"do:exit=42", {}, {42, 0}},
        {"do:signal=11", {}, {0, SIGSEGV}},
        {"do:allocates=2000000000", {.addressSpace = 1'000'000'000}, {7, 0}},
        {"do:allocates=500000000", {.addressSpace = 1'000'000'000}, {0, 0}},
        {"do:fill", {.fileSize = 3 << 20}, {3, 0}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.script);
        ProcessSpec spec = standIn({row.script, "-i", "none", sandbox.at("out").path()});
        spec.limits = row.limits;
        ChildProcess child(spec);
        EXPECT_TRUE(child.waitUntil(steadyNow() + std::chrono::seconds(30)));
        EXPECT_EQ(child.exitStatus().value().code, row.expected.code);
        EXPECT_EQ(child.exitStatus().value().signal, row.expected.signal);
    }
    EXPECT_EQ(std::filesystem::file_size(sandbox.at("out").filesystemPath()), 3U << 20);
}

TEST(ProcessRegistry, EndSoonKillsWhatIsDeafAndThenCleansUp) {
    for (const char* script : {"do:fork sleep", "do:ignore-term fork sleep"}) {
        const std::string mark = newUuid();
        ChildProcess child(standIn({script, mark}));
        EXPECT_TRUE(eventually([&] { return processesNaming(mark) == 2; }));
        std::atomic<int> left = -1;
        ProcessRegistry::endSoon(std::move(child), std::chrono::milliseconds(50),
                                 [&] { left = processesNaming(mark); });
        EXPECT_TRUE(eventually([&] { return left.load() >= 0; }));
        EXPECT_TRUE(eventually([&] { return processesNaming(mark) == 0; }));
    }
}

class EndOfProgram : public testing::Test {
protected:
    void SetUp() override {
        // The program that ends is this one, started anew: it has a starting thread of its own.
        testing::FLAGS_gtest_death_test_style = "threadsafe";
        ::setenv("QUILLMERE_TEST_MARK", newUuid().c_str(), 0);
        mark_ = ::getenv("QUILLMERE_TEST_MARK");
    }
    void TearDown() override {
        EXPECT_TRUE(eventually([this] { return processesNaming(mark_) == 0; }));
        ::unsetenv("QUILLMERE_TEST_MARK");
    }
    /// Starts the program, waits until it and what it starts run, and ends this one.
    void endWithChildren(const char* script, int processes, const std::function<void()>& end) const {
        ProcessRegistry::installEndOfProgram();
        const ChildProcess child(standIn({script, mark_}));
        if (eventually([&] { return processesNaming(mark_) == processes; }))
            end();
    }

private:
    std::string mark_;
};

TEST_F(EndOfProgram, ByItself) {
    EXPECT_EXIT(endWithChildren("do:ignore-term fork sleep", 2, [] { std::exit(5); }), testing::ExitedWithCode(5), "");
}
TEST_F(EndOfProgram, AskedToEnd) {
    EXPECT_EXIT(endWithChildren("do:ignore-term fork sleep", 2, [] { std::raise(SIGTERM); }),
                testing::KilledBySignal(SIGTERM), "");
}
TEST_F(EndOfProgram, AtOnceWhileAWorkerWaits) {
    // Made by the first program only: the one that ends removes nothing of the test's.
    std::optional<Sandbox> sandbox;
    if (!::getenv("QUILLMERE_TEST_FOLDER"))
        ::setenv("QUILLMERE_TEST_FOLDER", sandbox.emplace().root().path().c_str(), 1);
    const FileUrl folder(::getenv("QUILLMERE_TEST_FOLDER"));
    const auto end = [&] {
        const auto work = platform::TemporaryFolder::makeInside(folder);
        platform::ThreadPool pool({.name = "test"});
        std::latch started(1);
        pool.submit([&] {
            ChildProcess child(standIn({"do:sleep"}));
            started.count_down();
            child.wait();
            std::this_thread::sleep_for(std::chrono::hours(1));
        });
        started.wait();
        platform::endProgram(6);
    };
    EXPECT_EXIT(endWithChildren("do:ignore-term fork sleep", 2, end), testing::ExitedWithCode(6), "");
    EXPECT_TRUE(std::filesystem::is_empty(folder.filesystemPath()));
    ::unsetenv("QUILLMERE_TEST_FOLDER");
}
TEST_F(EndOfProgram, WhileTheWorkersRemoveTheirFolders) {
    std::optional<Sandbox> sandbox;
    if (!::getenv("QUILLMERE_TEST_FOLDER"))
        ::setenv("QUILLMERE_TEST_FOLDER", sandbox.emplace().root().path().c_str(), 1);
    const FileUrl folder(::getenv("QUILLMERE_TEST_FOLDER"));
    const auto end = [&] {
        platform::ThreadPool pool({.name = "test"});
        std::latch started(3);
        for (int i = 0; i < 3; ++i)
            pool.submit([&] {
                const auto work = platform::TemporaryFolder::makeInside(folder);
                // It makes files until it is killed; what is removed with it then is still growing.
                ChildProcess child(standIn({"do:litter", "-i", "none", work->url().appending("tree").path()}));
                EXPECT_TRUE(eventually(
                    [&] { return std::filesystem::exists(work->url().appending("tree/100").filesystemPath()); }));
                started.count_down();
                child.wait();
            });
        started.wait();
        platform::endProgram(6);
    };
    EXPECT_EXIT(endWithChildren("do:sleep", 1, end), testing::ExitedWithCode(6), "");
    EXPECT_TRUE(std::filesystem::is_empty(folder.filesystemPath()));
    ::unsetenv("QUILLMERE_TEST_FOLDER");
}
TEST_F(EndOfProgram, Killed) {
    EXPECT_EXIT(endWithChildren("do:sleep", 1, [] { std::raise(SIGKILL); }), testing::KilledBySignal(SIGKILL), "");
}

} // namespace
} // namespace quillmere
