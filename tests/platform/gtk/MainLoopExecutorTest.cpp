#include "platform/gtk/glib/MainLoopExecutor.h"

#include <atomic>
#include <gmock/gmock.h>
#include <stdexcept>

namespace quillmere::platform::gtk {
namespace {

void iterateUntil(const std::atomic<bool>& done) {
    while (!done)
        g_main_context_iteration(nullptr, TRUE);
}

TEST(MainLoopExecutor, RunsTasksInOrderOnLaterTurnsAlsoInsideANestedLoop) {
    MainLoopExecutor main;
    std::vector<int> order;
    std::atomic<bool> done = false;
    main.post([&] {
        order.push_back(1);
        main.post([&] {
            order.push_back(3);
            done = true;
        });
        while (order.size() < 3) // as a dialog that runs a loop of its own
            g_main_context_iteration(nullptr, TRUE);
        order.push_back(4);
    });
    main.post([&] { order.push_back(2); });
    EXPECT_TRUE(order.empty());
    iterateUntil(done);
    EXPECT_THAT(order, testing::ElementsAre(1, 2, 3, 4));
}

TEST(MainLoopExecutor, AStrayExceptionEndsWithItsTask) {
    MainLoopExecutor main;
    std::atomic<bool> done = false;
    main.post([] { throw std::runtime_error("stray"); });
    main.post([&] { done = true; });
    iterateUntil(done);
}

TEST(MainLoopExecutor, RunSyncRunsOnTheMainThreadAndHandsBackFailures) {
    MainLoopExecutor main;
    std::atomic<bool> done = false, ranOnMain = false, ran = false, threw = false;
    std::thread worker([&] {
        ran = main.runSync([&] { ranOnMain = main.isCurrent(); });
        try {
            main.runSync([] { throw std::runtime_error("failed"); });
        } catch (const std::runtime_error&) {
            threw = true;
        }
        main.post([&] { done = true; });
    });
    iterateUntil(done);
    worker.join();
    EXPECT_TRUE(ran && ranOnMain && threw);
    bool here = false;
    EXPECT_TRUE(main.runSync([&] { here = true; }));
    EXPECT_TRUE(here);
}

TEST(MainLoopExecutor, ClosingReleasesWhoWaitsAndRefusesWhoComes) {
    MainLoopExecutor main;
    std::atomic<bool> touched = false;
    std::atomic<int> refused = 0;
    std::vector<std::thread> workers;
    for (int i = 0; i < 8; ++i)
        workers.emplace_back([&] {
            if (!main.runSync([&] { touched = true; }))
                ++refused;
        });
    main.close(); // some wait already, some come later
    for (auto& worker : workers)
        worker.join();
    main.post([&] { touched = true; });
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    EXPECT_EQ(refused, 8);
    EXPECT_FALSE(touched);
}

} // namespace
} // namespace quillmere::platform::gtk
