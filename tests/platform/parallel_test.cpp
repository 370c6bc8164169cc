// Tasks of one call on several threads.

#include "platform/parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <vector>

namespace kaldra {
namespace {

class Parallel : public testing::Test {
protected:
    ~Parallel() override { SetThreadCount(0); }
};

TEST_F(Parallel, EveryTaskRunsOnceAndIsAwaited) {
    for (const int threads : {1, 2, 5, 20, 2}) {
        SetThreadCount(threads);
        for (const TaskOrder order : {TaskOrder::Rising, TaskOrder::ByThread}) {
            for (const std::size_t count : {0U, 1U, 2U, 7U, 1000U}) {
                for (int round = 0; round < 30; ++round) {
                    std::vector<int> runs(count);  // written without a lock: each by one task
                    std::atomic<bool> known{true};
                    const auto run = [&](std::size_t number) {
                        ++runs[number];
                        if (ThreadNumber() >= static_cast<std::size_t>(threads)) known = false;
                    };
                    RunTasks(count, run, order);
                    ASSERT_EQ(runs, std::vector<int>(count, 1)) << threads << " threads";
                    ASSERT_TRUE(known);
                }
            }
        }
    }
}

// Each task waits for the one before it: that ends because tasks start in the order of their numbers.
TEST_F(Parallel, ATaskMayWaitForLowerOnes) {
    for (const int threads : {1, 2, 4}) {
        SetThreadCount(threads);
        std::atomic<std::size_t> done{0};
        RunTasks(500, [&](std::size_t number) {
            for (Patience patience; done < number;) patience.Wait();
            done = number + 1;
        });
        EXPECT_EQ(done, 500U);
    }
}

// The caller's own part runs once, on its thread; where it throws, no task is left that still runs.
TEST_F(Parallel, ChunksCoverAllItemsBesideTheCallersOwnPart) {
    for (const int threads : {1, 3}) {
        SetThreadCount(threads);
        for (const std::size_t total : {0U, 1U, 99U, 100U, 101U}) {
            std::vector<int> seen(total);
            std::atomic<int> inside{0};
            const auto count = [&](std::size_t first, std::size_t end) {
                ++inside;
                for (std::size_t i = first; i < end; ++i) ++seen[i];
                --inside;
            };
            int own = 0;
            RunChunksBeside([&] { own += ThreadNumber() == 0 ? 1 : 100; }, total, 10, count);
            EXPECT_EQ(seen, std::vector<int>(total, 1));
            EXPECT_EQ(own, 1);
            EXPECT_THROW(RunChunksBeside([] { throw std::bad_alloc(); }, total, 10, count), std::bad_alloc);
            EXPECT_EQ(inside, 0);
            RunChunks(total, 10, count);  // works as before
            for (const int times : seen) EXPECT_TRUE(times == 2 || times == 3);
        }
    }
}

}  // namespace
}  // namespace kaldra
