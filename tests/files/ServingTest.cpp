#include "base/Errors.h"
#include "base/FileDescriptor.h"
#include "base/RegularFile.h"
#include "files/LocalFiles.h"
#include "platform/headless/HeadlessPlatform.h"
#include "tests/support/Sandbox.h"

#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using platform::HeadlessSchemeTask;
using ::testing::Each;
using ::testing::Le;

class ServingTest : public testing::Test, protected tests::Sandbox {
protected:
    using TaskRef = std::shared_ptr<HeadlessSchemeTask>;

    static TaskRef requestAt(std::optional<std::string> url, std::optional<std::string> range = std::nullopt,
                             std::string method = "GET") {
        return std::make_shared<HeadlessSchemeTask>(
            platform::SchemeRequest{.url = std::move(url), .method = std::move(method), .range = std::move(range)});
    }
    TaskRef request(const FileUrl& file, std::optional<std::string> range = std::nullopt, std::string method = "GET") {
        return requestAt("quillmere://app" + local_->grant(file), std::move(range), std::move(method));
    }

    TaskRef serve(TaskRef task) {
        local_->start(task);
        EXPECT_TRUE(platform_.executors.main().runUntil([&] { return task->isOver() && local_->activeTasks() == 0; }));
        return task;
    }

    static size_t openDescriptors() {
        return static_cast<size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
    }

    platform::HeadlessPlatform platform_{root()};
    std::shared_ptr<LocalFiles> local_ =
        std::make_shared<LocalFiles>(root(), platform_.executors, platform_.contentTypes);
};

std::string pattern(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>((i * 31 + i / 251) & 0x7F);
    return bytes;
}

TEST_F(ServingTest, WholeFilesRangesAndHeads) {
    const std::string bytes = pattern(700'000);
    const FileUrl file = write("film.mp4", bytes);
    const FileUrl empty = write("empty.css", "");
    struct Row {
        const FileUrl& file;
        std::optional<std::string> range;
        std::string method;
        int status;
        std::string length;
        std::optional<std::string> contentRange;
        std::string body;
    };
    const Row rows[] = {
        {file, std::nullopt, "GET", 200, "700000", std::nullopt, bytes},
        {file, "bytes=0-1023", "GET", 206, "1024", "bytes 0-1023/700000", bytes.substr(0, 1024)},
        {file, "bytes=262143-600000", "GET", 206, "337858", "bytes 262143-600000/700000", bytes.substr(262143, 337858)},
        {file, "bytes=-5", "GET", 206, "5", "bytes 699995-699999/700000", bytes.substr(699995)},
        {file, std::nullopt, "HEAD", 200, "700000", std::nullopt, ""},
        {file, "bytes=1-2", "HEAD", 206, "2", "bytes 1-2/700000", ""},
        {file, std::nullopt, "head", 200, "700000", std::nullopt, bytes},
        {empty, std::nullopt, "GET", 200, "0", std::nullopt, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.method + " " + row.range.value_or("") + " " + row.file.lastPathComponent());
        const auto task = serve(request(row.file, row.range, row.method));
        ASSERT_TRUE(task->finished);
        EXPECT_EQ(task->response->status, row.status);
        EXPECT_EQ(task->response->httpVersion, "HTTP/1.1");
        EXPECT_EQ(task->header("Content-Length"), row.length);
        EXPECT_EQ(task->header("Content-Range"), row.contentRange);
        EXPECT_EQ(task->header("Content-Type"), LocalFiles::mime(row.file, platform_.contentTypes));
        EXPECT_EQ(task->header("Accept-Ranges"), "bytes");
        EXPECT_EQ(task->header("Access-Control-Allow-Origin"), "*");
        EXPECT_EQ(task->header("Cache-Control"), "no-store");
        EXPECT_TRUE(task->body == row.body);
        EXPECT_THAT(task->chunkSizes, Each(Le(LocalFiles::chunkSize)));
    }
}

TEST_F(ServingTest, RefusalsFailTheTaskAndSayWhy) {
    const FileUrl file = write("a.txt", "abc");
    const FileUrl empty = write("empty", "");
    const FileUrl pipe = at("pipe");
    ASSERT_EQ(::mkfifo(pipe.path().c_str(), 0600), 0);
    const FileUrl socketFile = at("sock");
    const FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    socketFile.path().copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    const FileUrl looped = at("loop");
    fs::create_symlink("loop", looped.filesystemPath());

    struct Row {
        std::string what;
        TaskRef task;
        std::string message;
    };
    const std::string unavailable = "The requested local file is unavailable.";
    const Row rows[] = {
        {"no address", requestAt(std::nullopt), unavailable},
        {"another host", requestAt("quillmere://other/index.html"), unavailable},
        {"a climb", requestAt("quillmere://app/../../etc/passwd"), unavailable},
        {"an unknown token", requestAt("quillmere://app/__file/x/y"), unavailable},
        {"a bad range", request(file, "bytes=2-1"), "Invalid byte range."},
        {"a range past the end", request(file, "bytes=3-"), "Unsatisfiable byte range."},
        {"a range of nothing", request(empty, "bytes=0-"), "Invalid byte range."},
        {"a missing file", request(at("gone.txt")), "“gone.txt” no longer exists."},
        {"a folder", request(root()), "“" + root().lastPathComponent() + "” is a folder."},
        {"a pipe without a writer", request(pipe), "“pipe” is not a regular file."},
        {"a socket", request(socketFile), "“sock” is not a regular file."},
        {"a device", request(FileUrl("/dev/zero")), "“zero” is not a regular file."},
        {"a link to itself", request(looped), "“loop” is a link that could not be followed."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        serve(row.task);
        EXPECT_FALSE(row.task->response || row.task->finished);
        EXPECT_EQ(row.task->failure, row.message);
    }
}

TEST_F(ServingTest, OnlyTheFileThatWasCheckedIsServed) {
    const FileUrl file = write("entry.txt", "checked");
    const FileUrl outside = write("outside.txt", "secret");
    const std::string url = "quillmere://app" + local_->grant(file, RegularFile(file).identity());
    const auto fetch = [&] { return serve(requestAt(url)); };
    EXPECT_EQ(fetch()->body, "checked");
    EXPECT_EQ(local_->open(url).identity(), RegularFile(file).identity());

    fs::remove(file.filesystemPath());
    fs::create_symlink(outside.filesystemPath(), file.filesystemPath());
    EXPECT_EQ(fetch()->failure, "The requested local file is unavailable.");
    EXPECT_THROW(local_->open(url), FileFailure);

    local_->grant(file);
    EXPECT_EQ(fetch()->body, "secret") << "chosen anew by the user, links included";
}

TEST_F(ServingTest, ARefusedResponseFails) {
    const auto task = request(write("a.txt"));
    task->refusesResponse = true;
    serve(task);
    EXPECT_EQ(task->failure, "Invalid local file response.");
}

TEST_F(ServingTest, AFileThatShrinksEndsTheBodyEarly) {
    const FileUrl file = write("log.txt", pattern(600'000));
    const auto task = request(file);
    task->allow(1);
    local_->start(task);
    ASSERT_TRUE(platform_.executors.main().runUntil([&] { return task->chunkSizes.size() == 1; }));
    fs::resize_file(file.filesystemPath(), 300'000);
    task->allow(1'000);
    ASSERT_TRUE(platform_.executors.main().runUntil([&] { return task->isOver(); }));
    EXPECT_TRUE(task->finished);
    EXPECT_EQ(task->body.size(), 300'000U);
    EXPECT_EQ(task->header("Content-Length"), "600000");
}

TEST_F(ServingTest, AStoppedTaskHearsNothingMoreAndLeavesNothingBehind) {
    const FileUrl file = write("big.bin", pattern(3'000'000));
    const size_t before = openDescriptors();
    std::vector<TaskRef> tasks;
    for (int i = 0; i < 20; ++i) {
        tasks.push_back(request(file));
        tasks.back()->allow(2);
        local_->start(tasks.back());
    }
    ASSERT_TRUE(platform_.executors.main().runUntil(
        [&] { return std::ranges::all_of(tasks, [](const auto& task) { return task->chunkSizes.size() == 2; }); }));
    for (size_t i = 0; i < tasks.size(); i += 2) {
        local_->stop(*tasks[i]);
        tasks[i]->stop();
    }
    for (const auto& task : tasks)
        task->allow(1'000);
    ASSERT_TRUE(platform_.executors.main().runUntil([&] { return platform_.executors.isIdle(); }));
    platform_.executors.main().runPending();
    for (size_t i = 0; i < tasks.size(); ++i) {
        EXPECT_EQ(tasks[i]->finished, i % 2 == 1);
        EXPECT_EQ(tasks[i]->chunkSizes.size(), i % 2 == 1 ? 12U : 2U);
        EXPECT_EQ(tasks[i].use_count(), 1) << "still held";
    }
    EXPECT_EQ(local_->activeTasks(), 0U);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(ServingTest, UnreadAnswersHoldNoWorker) {
    const FileUrl file = write("big.bin", pattern(600'000));
    std::vector<TaskRef> unread;
    for (int i = 0; i < 40; ++i) {
        unread.push_back(request(file));
        unread.back()->allow(1);
        local_->start(unread.back());
    }
    ASSERT_TRUE(platform_.executors.main().runUntil(
        [&] { return std::ranges::all_of(unread, [](const auto& task) { return task->chunkSizes.size() == 1; }); }));
    EXPECT_TRUE(platform_.executors.main().runUntil([&] { return platform_.executors.isIdle(); }));
    for (const auto& task : unread)
        task->allow(1'000);
    EXPECT_TRUE(platform_.executors.main().runUntil(
        [&] { return std::ranges::all_of(unread, [](const auto& task) { return task->finished; }); }));
}

TEST_F(ServingTest, ATaskStoppedAtOnceGetsNotEvenAResponse) {
    const auto task = request(write("a.txt"));
    local_->start(task);
    local_->stop(*task);
    ASSERT_TRUE(platform_.executors.main().runUntil([&] { return platform_.executors.isIdle(); }));
    platform_.executors.main().runPending();
    EXPECT_FALSE(task->response);
    EXPECT_FALSE(task->isOver());
}

} // namespace
} // namespace quillmere
