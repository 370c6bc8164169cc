// Tasks of one call on several threads.

#include "platform/parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

namespace kaldra {
namespace {

class Parallel : public testing::Test {
protected:
    ~Parallel() override { SetThreadCount(0); }
};

TEST_F(Parallel, EveryTaskRunsOnceAndIsAwaited) {
    for (const int threads : {1, 2, 5, 2}) {
        SetThreadCount(threads);
        for (const std::size_t count : {0U, 1U, 2U, 7U, 1000U}) {
            for (int round = 0; round < 50; ++round) {
                std::vector<int> runs(count);  // written without a lock: each by one task
                std::atomic<bool> known{true};
                RunTasks(count, [&](std::size_t number) {
                    ++runs[number];
                    if (ThreadNumber() >= static_cast<std::size_t>(threads)) known = false;
                });
                ASSERT_EQ(runs, std::vector<int>(count, 1)) << threads << " threads";
                ASSERT_TRUE(known);
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

TEST_F(Parallel, ChunksCoverAllItems) {
    SetThreadCount(3);
    for (const std::size_t total : {0U, 1U, 99U, 100U, 101U}) {
        std::vector<int> seen(total);
        RunChunks(total, 10, [&](std::size_t first, std::size_t end) {
            for (std::size_t i = first; i < end; ++i) ++seen[i];
        });
        EXPECT_EQ(seen, std::vector<int>(total, 1));
    }
}

}  // namespace
}  // namespace kaldra
