#include "convergence/graph_memory.h"

#include <thread>

#include "platform/faults.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

class GraphMemoryTest : public KaldraTest {};

TEST_F(GraphMemoryTest, AFreshFileResetsTheSettings) {
    bool due = false;
    ASSERT_EQ(StoreGraphPoint(3, 7, due), 1);
    graphMemory.GraphFirstIteration = 5;
    graphMemory.GraphUpdateMode = graphManually;
    graphMemory.GraphUpdateInterval = 4;
    graphMemory.GraphLastIteration = 20;
    SetGraphStep(9);
    SetGraphDefaults();
    EXPECT_THAT((std::array{graphMemory.GraphPointCount, graphMemory.GraphFirstIteration, graphMemory.GraphUpdateMode,
                            graphMemory.GraphUpdateInterval, graphMemory.GraphStep, graphMemory.GraphLastIteration}),
                ElementsAre(0, 1, graphAutomatically, 1, 0, 20));
}

// A table that grew by one point at a time would be copied in every iteration.
TEST_F(GraphMemoryTest, LongCurvesAreSeldomMoved) {
    bool due = false;
    ArmFault(FaultSeam::Allocation, 0);
    for (std::int32_t i = 1; i <= 10000; ++i) ASSERT_EQ(StoreGraphPoint(i, 1.0, due), 1);
    EXPECT_LT(FaultCalls(FaultSeam::Allocation), 50);
}

// A reader that takes the mutex sees both arrays and their count fit at any time.
TEST_F(GraphMemoryTest, ReadersSeeAWholeCurve) {
    constexpr std::int32_t points = 500;
    const std::jthread writer([] {
        bool due = false;
        for (std::int32_t i = 1; i <= points; ++i) EXPECT_EQ(StoreGraphPoint(i, 2.0 * i, due), 1);
    });
    std::int32_t seen = 0;
    while (seen < points) {
        const std::scoped_lock outer(hmtxGraphMem);
        const std::scoped_lock again(hmtxGraphMem);
        seen = graphMemory.GraphPointCount;
        if (seen == 0) continue;
        ASSERT_EQ(graphMemory.GraphNorms.size(), static_cast<std::size_t>(seen));
        ASSERT_EQ(graphMemory.GraphNorms.back(), 2.0 * graphMemory.GraphIterations.back());
    }
}

// In a run the calculation thread waits in its notifications while the front end takes the mutex.
TEST_F(GraphMemoryTest, NotificationsComeWithTheMutexFree) {
    std::vector<std::int32_t> counts;
    recorder.onGraphData = [&] {
        EXPECT_TRUE(GraphMemoryIsFree());
        counts.push_back(graphMemory.GraphPointCount);
    };
    recorder.onStatus = [this](std::string_view) { recorder.onGraphData(); };
    graphMemory.GraphWindow = 1;
    EXPECT_EQ(Run(Column()).result, 1);
    EXPECT_THAT(counts, ElementsAre(0, 1, 1, 2, 2, 0));  // "Solving...", two iterations, "Done."
}

}  // namespace
}  // namespace kaldra
