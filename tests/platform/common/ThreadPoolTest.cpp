#include "platform/common/ThreadPool.h"

#include "tests/platform/common/Processes.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <latch>
#include <mutex>
#include <thread>
#include <vector>

namespace quillmere {
namespace {

using platform::ThreadPool;

TEST(ThreadPool, BlockedTasksNeverHoldUpOthers) {
    ThreadPool pool({.name = "test"});
    constexpr int blocked = 100;
    std::latch release(1);
    std::latch allBlocked(blocked);
    std::latch finished(blocked);
    for (int i = 0; i < blocked; ++i)
        pool.submit([&] {
            allBlocked.count_down();
            release.wait();
            finished.count_down();
        });
    allBlocked.wait();
    std::latch other(1);
    pool.submit([&] { other.count_down(); });
    other.wait();
    release.count_down();
    finished.wait();
}

TEST(ThreadPool, IdleThreadsRetireAndComeBack) {
    ThreadPool pool({.name = "test", .idleTime = std::chrono::milliseconds(1)});
    for (int round = 0; round < 2; ++round) {
        std::latch ran(1);
        pool.submit([&] { ran.count_down(); });
        ran.wait();
        EXPECT_TRUE(tests::eventually([&] { return pool.workerCount() == 0; }));
    }
}

TEST(ThreadPool, TasksPastTheLimitWaitForAThread) {
    ThreadPool pool({.name = "test", .maximumWorkers = 2});
    std::latch release(1);
    std::latch finished(6);
    for (int i = 0; i < 6; ++i)
        pool.submit([&] {
            release.wait();
            finished.count_down();
        });
    EXPECT_EQ(pool.workerCount(), 2U);
    release.count_down();
    finished.wait();
}

TEST(ThreadPool, CapturesEndWithTheTaskEvenWhenItThrows) {
    ThreadPool pool({.name = "test"});
    for (const bool throws : {false, true}) {
        auto captured = std::make_shared<int>(1);
        const std::weak_ptr<int> watched = captured;
        pool.submit([captured = std::move(captured), throws] {
            if (throws)
                throw 1;
        });
        EXPECT_TRUE(tests::eventually([&] { return watched.expired(); }));
    }
}

TEST(ThreadPool, EndsWithoutWaitingForBlockedWorkAndDropsWhatHasNotStarted) {
    auto release = std::make_shared<std::latch>(1);
    auto finished = std::make_shared<std::latch>(1);
    std::latch started(1);
    auto queued = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = queued;
    {
        ThreadPool pool({.name = "test", .maximumWorkers = 1});
        pool.submit([&started, release, finished] {
            started.count_down();
            release->wait();
            finished->count_down();
        });
        started.wait();
        pool.submit([queued = std::move(queued)] { ADD_FAILURE(); });
    }
    EXPECT_TRUE(watched.expired());
    release->count_down();
    finished->wait();
}

TEST(SerialQueue, RunsOneAtATimeInOrderBesideOthers) {
    ThreadPool pool({.name = "test"});
    const auto first = pool.makeSerial();
    const auto second = pool.makeSerial();
    std::atomic<int> running = 0;
    std::vector<int> order;
    std::latch finished(501);
    std::latch secondRan(1);
    first->submit([&] {
        secondRan.wait(); // the other queue gets a thread of its own
        finished.count_down();
    });
    for (int i = 0; i < 500; ++i)
        first->submit([&, i] {
            EXPECT_EQ(++running, 1);
            order.push_back(i);
            --running;
            finished.count_down();
        });
    second->submit([&] { secondRan.count_down(); });
    finished.wait();
    EXPECT_EQ(order.size(), 500U);
    EXPECT_TRUE(std::ranges::is_sorted(order));
}

} // namespace
} // namespace quillmere
