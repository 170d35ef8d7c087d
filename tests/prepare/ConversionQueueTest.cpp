#include "prepare/ConversionQueue.h"

#include "base/Errors.h"
#include "tests/platform/common/Processes.h"

#include <gmock/gmock.h>
#include <thread>
#include <vector>

namespace quillmere {
namespace {

/// Requests that are made one after the other, and work that ends when it is told to.
class ConversionQueueTest : public testing::Test {
protected:
    enum class End { none, done, cancelled, failed };
    struct Request {
        std::string name;
        std::stop_source superseded;
        std::atomic<End> end = End::none;
        std::jthread thread;
    };

    Request& ask(const std::string& name, ConverterKind kind = ConverterKind::office) {
        auto& request = *requests_.emplace_back(std::make_unique<Request>());
        request.name = name;
        request.thread = std::jthread([this, &request, kind] {
            try {
                queue.run(request.name, kind, request.superseded.get_token(), [&] { work(request.name); });
                request.end = End::done;
            } catch (const CancellationError&) {
                request.end = End::cancelled;
            } catch (const FileFailure&) {
                request.end = End::failed;
            }
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(30)); // so that the next one is newer
        return request;
    }
    void finish(const std::string& name) {
        const std::lock_guard lock(mutex_);
        finished_.push_back(name);
        changed_.notify_all();
    }
    std::vector<std::string> begun() {
        const std::lock_guard lock(mutex_);
        return begun_;
    }
    bool hasBegun(const std::string& name) {
        return tests::eventually([&] { return std::ranges::count(begun(), name) > 0; });
    }
    static bool ends(const Request& request, End end) {
        return tests::eventually([&] { return request.end == end; });
    }

    ConversionQueue queue;

private:
    void work(const std::string& name) {
        std::unique_lock lock(mutex_);
        begun_.push_back(name);
        changed_.wait(lock, [&] { return std::ranges::count(finished_, name) > 0; });
        if (name.starts_with("bad"))
            throw FileFailure("bad");
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> begun_;
    std::vector<std::string> finished_;
    std::vector<std::unique_ptr<Request>> requests_;
};

TEST_F(ConversionQueueTest, TwoOfAKindRunAndTheNewestComesNext) {
    for (const char* name : {"1", "2", "3", "4", "5"})
        ask(name);
    ask("film", ConverterKind::media);
    EXPECT_TRUE(hasBegun("film"));
    EXPECT_THAT(begun(), testing::ElementsAre("1", "2", "film"));
    finish("2");
    EXPECT_TRUE(hasBegun("5"));
    finish("5");
    EXPECT_TRUE(hasBegun("4"));
    EXPECT_THAT(begun(), testing::ElementsAre("1", "2", "film", "5", "4"));
    for (const char* name : {"1", "3", "4", "film"})
        finish(name);
}

TEST_F(ConversionQueueTest, WhatNobodyWaitsForIsNotBegun) {
    ask("1");
    auto& running = ask("2");
    auto& waiting = ask("3");
    auto& follower = ask("1");
    auto& wanted = ask("4");
    for (auto* request : {&running, &waiting, &follower})
        request->superseded.request_stop();
    EXPECT_TRUE(ends(waiting, End::cancelled));
    EXPECT_TRUE(ends(follower, End::cancelled));
    finish("2");
    EXPECT_TRUE(ends(running, End::done)) << "what runs goes on";
    EXPECT_TRUE(hasBegun("4"));
    finish("1");
    finish("4");
    EXPECT_TRUE(ends(wanted, End::done));
    EXPECT_THAT(begun(), testing::ElementsAre("1", "2", "4"));
}

TEST_F(ConversionQueueTest, TheSameWorkIsDoneOnceForAllWhoStillWantIt) {
    auto& first = ask("bad");
    auto& second = ask("bad");
    ask("other");
    auto& gone = ask("later");
    auto& stays = ask("later");
    auto& newer = ask("newer");
    gone.superseded.request_stop();
    EXPECT_TRUE(ends(gone, End::cancelled));
    finish("bad");
    EXPECT_TRUE(ends(first, End::failed));
    EXPECT_TRUE(ends(second, End::failed));
    EXPECT_TRUE(hasBegun("newer"));
    for (const char* name : {"newer", "other", "later"})
        finish(name);
    EXPECT_TRUE(ends(newer, End::done));
    EXPECT_TRUE(ends(stays, End::done));
    EXPECT_THAT(begun(), testing::ElementsAre("bad", "other", "newer", "later"));
}

} // namespace
} // namespace quillmere
