#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "kelvo/WorkerPool.h"

namespace kelvo {
namespace {

using namespace std::chrono_literals;

// Each task opens a group of its own, fills it with tasks that do the same one level
// deeper, and waits for it: every level waits on the next one. With one thread, only a
// waiter that runs queued tasks itself gets through.
void spawnNested(WorkerPool& pool, int level, int depth, std::atomic<int>& ran) {
    ++ran;
    if (level == depth) return;
    TaskGroup children;
    for (int child = 0; child < 3; ++child)
        pool.submit(children, [&pool, level, depth, &ran] { spawnNested(pool, level + 1, depth, ran); });
    pool.wait(children);
}

TEST(WorkerPool, NestedGroupsWaitingOnEachOtherFinish) {
    for (const std::size_t threads : {1u, 2u, 8u}) {
        std::atomic<int> ran{0};
        // A deadlock hangs here: the test's time limit under ctest fails it.
        WorkerPool pool(threads);
        TaskGroup top;
        for (int task = 0; task < 4; ++task) pool.submit(top, [&] { spawnNested(pool, 1, 5, ran); });
        pool.wait(top);
        // 4 tasks at the first level, each with 3 + 9 + 27 + 81 below it.
        EXPECT_EQ(ran.load(), 4 * (1 + 3 + 9 + 27 + 81)) << threads << " threads";
    }
}

TEST(WorkerPool, IdleWorkerIsReportedOnlyWhileOneWaitsForWork) {
    WorkerPool pool(2);
    const auto eventually = [](const std::function<bool()>& condition) {
        for (int attempt = 0; attempt < 2000 && !condition(); ++attempt) std::this_thread::sleep_for(1ms);
        return condition();
    };
    EXPECT_TRUE(eventually([&] { return pool.hasIdleWorker(); }));

    std::atomic<int> started{0};
    std::atomic<bool> released{false};
    TaskGroup group;
    for (int task = 0; task < 2; ++task)
        pool.submit(group, [&] {
            ++started;
            while (!released) std::this_thread::sleep_for(1ms);
        });
    ASSERT_TRUE(eventually([&] { return started == 2; }));
    EXPECT_FALSE(pool.hasIdleWorker());
    released = true;
    pool.wait(group);
    EXPECT_TRUE(eventually([&] { return pool.hasIdleWorker(); }));
}

}  // namespace
}  // namespace kelvo
