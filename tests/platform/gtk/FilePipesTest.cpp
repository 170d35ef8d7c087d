#include "helpers/web-process/FilePipes.h"

#include "platform/gtk/glib/MainLoopExecutor.h"
#include "platform/gtk/reads/DescriptorMessage.h"
#include "platform/gtk/reads/FilePour.h"
#include "platform/gtk/reads/MediaChannel.h"
#include "platform/gtk/reads/ReadProtocol.h"
#include "tests/support/Sandbox.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <future>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmere::platform::gtk {
namespace {

namespace fs = std::filesystem;

std::string pattern(size_t size) {
    std::string bytes(size, '\0');
    std::mt19937 random(7);
    for (auto& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

/// Both ends of a conversation, the program's on the main loop of this thread, the source's on one of its own.
class FilePipesTest : public testing::Test, protected tests::Sandbox {
protected:
    std::shared_ptr<FilePipes> open(const FileUrl& file) {
        auto source = std::make_shared<const RegularFile>(file);
        const uint64_t size = source->size();
        return std::make_shared<FilePipes>(MediaChannel::open(std::move(source), executors_), size);
    }

    /// Runs `work` as a streaming thread does, while the main loop turns.
    template <typename Work>
    auto stream(Work work) {
        auto running = std::async(std::launch::async, work);
        while (running.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
            turn();
        return running.get();
    }

    static void turn() {
        if (!g_main_context_iteration(nullptr, FALSE))
            ::usleep(100);
    }

    std::pair<FilePipes::Outcome, std::string> read(FilePipes& pipes, uint64_t offset, size_t count) {
        return stream([&] { return readHere(pipes, offset, count); });
    }
    std::pair<FilePipes::Outcome, std::string> readHere(FilePipes& pipes, uint64_t offset, size_t count) const {
        std::string bytes(count, '\0');
        const auto result = pipes.read(offset, std::as_writable_bytes(std::span(bytes)), interruption_.get());
        bytes.resize(result.count);
        return {result.outcome, bytes};
    }

    static std::multiset<std::string> openFiles() {
        std::multiset<std::string> names;
        for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
            std::error_code gone;
            const auto name = fs::read_symlink(entry, gone).native();
            if (name.starts_with("pipe:") || name.starts_with("socket:") || name.starts_with("/tmp"))
                names.insert(name);
        }
        return names;
    }
    /// Turns the loop until the test holds; false when that has not come within a long time.
    static bool settles(const std::function<bool()>& test) {
        for (int round = 0; round < 4000 && !test(); ++round) {
            turn();
            ::usleep(2000);
        }
        return test();
    }
    static bool settlesTo(const std::multiset<std::string>& before) {
        return settles([&] { return std::ranges::includes(before, openFiles()); });
    }

    DesktopExecutors executors_;
    FileDescriptor interruption_{::eventfd(0, EFD_CLOEXEC)};
};

TEST_F(FilePipesTest, ReadsOnwardsBackwardsAndInSeveralPlacesInTurn) {
    const std::string bytes = pattern(3'000'000);
    const auto before = openFiles();
    const auto pipes = open(write("film.mp4", bytes));
    EXPECT_EQ(pipes->size(), bytes.size());
    const auto wrong = stream([&] {
        std::mt19937 random(11);
        size_t count = 0;
        for (size_t i = 0; i < 400; ++i) {
            const size_t sound = i * 3'000, film = 1'500'000 + i * 3'500, anywhere = random() % bytes.size();
            for (const size_t at : {sound, film, anywhere, film > 9'000 ? film - 9'000 : film})
                count += readHere(*pipes, at, 2'500) != std::pair(FilePipes::Outcome::read, bytes.substr(at, 2'500));
        }
        return count;
    });
    EXPECT_EQ(wrong, 0U);
    EXPECT_EQ(read(*pipes, 2'999'990, 100), std::pair(FilePipes::Outcome::read, bytes.substr(2'999'990)));
    EXPECT_EQ(read(*pipes, 5'000'000, 100), std::pair(FilePipes::Outcome::read, std::string()));
    // Two ends of the conversation, the file, and two ends of each pipe.
    EXPECT_TRUE(settles([&] { return openFiles().size() <= before.size() + 3 + 2 * FilePipes::mostPipes; }));
}

TEST_F(FilePipesTest, FilesThatShrinkOrGrowMeanwhile) {
    const std::string bytes = pattern(2'000'000);
    const FileUrl file = write("log.mp3", bytes);
    const auto pipes = open(file);
    EXPECT_EQ(read(*pipes, 0, 100'000).second, bytes.substr(0, 100'000));
    fs::resize_file(file.filesystemPath(), 1'200'000);
    EXPECT_EQ(read(*pipes, 1'000'000, 500'000), std::pair(FilePipes::Outcome::read, bytes.substr(1'000'000, 200'000)));
    EXPECT_EQ(pipes->size(), 1'200'000U);
    fs::resize_file(file.filesystemPath(), 1'600'000);
    EXPECT_EQ(read(*pipes, 1'550'000, 100'000).second, std::string(50'000, '\0'));
    EXPECT_EQ(pipes->size(), 1'600'000U);
}

TEST_F(FilePipesTest, AnInterruptionEndsTheWaitAndNotTheConversation) {
    const std::string bytes = pattern(600'000);
    const auto pipes = open(write("film.webm", bytes));
    ::eventfd_write(interruption_.get(), 1);
    EXPECT_EQ(readHere(*pipes, 0, 10).first, FilePipes::Outcome::interrupted); // nobody turns the loop
    auto waiting = std::async(std::launch::async, [&] { return readHere(*pipes, 400'000, 10).first; });
    EXPECT_EQ(waiting.get(), FilePipes::Outcome::interrupted);
    eventfd_t count = 0;
    ::eventfd_read(interruption_.get(), &count);
    for (const size_t at : {size_t{0}, size_t{400'000}})
        EXPECT_EQ(read(*pipes, at, 1000), std::pair(FilePipes::Outcome::read, bytes.substr(at, 1000)));
}

TEST_F(FilePipesTest, WhatEitherSideLeavesIsClosed) {
    const auto before = openFiles();
    const FileUrl file = write("film.mkv", pattern(4'000'000));
    for (int round = 0; round < 20; ++round) {
        auto pipes = open(file);
        EXPECT_EQ(read(*pipes, 1'000'000, 5).first, FilePipes::Outcome::read); // most of it is left in the pipe
    }
    EXPECT_TRUE(settlesTo(before)) << "the program holds on to sources that are gone";

    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
    FilePipes orphan(FileDescriptor{ends[0]}, 10);
    ::close(ends[1]);
    EXPECT_EQ(readHere(orphan, 0, 5).first, FilePipes::Outcome::failed);
}

TEST_F(FilePipesTest, ASourceThatHoardsGetsNoMoreAndNonsenseEndsTheConversation) {
    const FileUrl file = write("film.mkv", pattern(900'000));
    const auto before = openFiles();
    {
        const FileDescriptor channel = MediaChannel::open(std::make_shared<const RegularFile>(file), executors_);
        for (uint64_t number = 0; number < 100; ++number)
            ASSERT_TRUE(descriptorMessage::send(channel.get(), reads::PipeRequest{.number = number, .offset = 1}));
        std::vector<FileDescriptor> hoard;
        const auto take = [&] {
            turn();
            reads::PipeReply reply;
            auto received = descriptorMessage::receive(channel.get(), reply);
            if (received.state == descriptorMessage::State::received)
                hoard.push_back(std::move(received.descriptor));
        };
        while (hoard.size() < 60)
            take();
        for (int round = 0; round < 300; ++round)
            take();
        EXPECT_LE(hoard.size(), static_cast<size_t>(MediaChannel::mostPipes));
        hoard.clear();
        while (hoard.size() < 30) // what was asked for comes when there is room
            take();
    }
    EXPECT_TRUE(settlesTo(before));

    const FileDescriptor channel = MediaChannel::open(std::make_shared<const RegularFile>(file), executors_);
    const FileDescriptor gift(::open(file.path().c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_TRUE(descriptorMessage::send(channel.get(), uint32_t{7}, gift.get()));
    reads::PipeReply reply;
    descriptorMessage::Received received;
    do {
        turn();
        received = descriptorMessage::receive(channel.get(), reply);
    } while (received.state == descriptorMessage::State::nothing);
    EXPECT_EQ(received.state, descriptorMessage::State::closed);
}

TEST_F(FilePipesTest, NoDescriptorOfTheFileLeavesTheProgramAndNoWorkerWaitsForTheReader) {
    const std::string bytes = pattern(5'000'000);
    const FileUrl file = write("paper.pdf", bytes);
    const auto pour = FilePour::make(std::make_shared<const RegularFile>(file), {.offset = 1'000, .length = 4'000'000},
                                     65'536, executors_);
    const FileDescriptor end = pour->takeReadEnd();
    struct stat facts{};
    ASSERT_EQ(::fstat(end.get(), &facts), 0);
    EXPECT_TRUE(S_ISFIFO(facts.st_mode));

    const auto started = std::chrono::steady_clock::now();
    pour->run(); // on this very thread: with nobody reading it comes back
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
    const auto received = stream([&] {
        std::string all;
        char block[30'000];
        for (;;) {
            const ssize_t got = ::read(end.get(), block, sizeof block);
            if (got == 0)
                return all;
            if (got > 0)
                all.append(block, static_cast<size_t>(got));
            else
                ::usleep(50);
        }
    });
    EXPECT_TRUE(received == bytes.substr(1'000, 4'000'000));
}

TEST_F(FilePipesTest, FileSystemsThatCannotSpliceAreCopied) {
    // Whatever roads this kernel offers for such files, the bytes are the same.
    for (const char* path : {"/proc/version", "/proc/self/limits", "/sys/kernel/mm/transparent_hugepage/enabled"}) {
        std::ifstream plain(path);
        const std::string expected((std::istreambuf_iterator<char>(plain)), std::istreambuf_iterator<char>());
        const auto pour = FilePour::make(std::make_shared<const RegularFile>(FileUrl(path)),
                                         {.offset = 0, .length = 1'000'000}, 65'536, executors_);
        const FileDescriptor end = pour->takeReadEnd();
        pour->run();
        std::string bytes(100'000, '\0');
        bytes.resize(static_cast<size_t>(std::max<ssize_t>(0, ::read(end.get(), bytes.data(), bytes.size()))));
        EXPECT_EQ(bytes, expected) << path;
    }
}

} // namespace
} // namespace quillmere::platform::gtk
