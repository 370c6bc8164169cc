#include "frontend/console/progress.h"

#include <gtest/gtest.h>

namespace kaldra {
namespace {

// From 8 to 4 per cent in the last of 4 iterations, 0.5 wanted: three halvings more, of 2 seconds each.
TEST(Progress, EstimatesByTheLastTwoChanges) {
    Progress p{true, 0, 0, 0, 4, 100, 4, 8, 0.5, 8};
    EXPECT_EQ(ProgressLine(p, 200), "iteration 4, change 4.000 % (tolerance 0.500 %), 0:08 elapsed, about 0:06 left");
    EXPECT_EQ(ProgressLine(p, 11), "iteration 4");
    p.maxIterations = 5;
    EXPECT_DOUBLE_EQ(EstimateSecondsLeft(p), 2);
    p.changeBefore = 0.26;
    p.change = 0.25;
    EXPECT_DOUBLE_EQ(EstimateSecondsLeft(p), 0);
    p.changeBefore = 8;
    p.change = 9;  // it does not converge
    EXPECT_LT(EstimateSecondsLeft(p), 0);
    p.change = 4;
    p.iteration = 2;  // the first change is no change
    EXPECT_LT(EstimateSecondsLeft(p), 0);
    p.iteration = 1;
    EXPECT_EQ(ProgressLine(p, 200), "iteration 1, 0:08 elapsed");
}

TEST(Progress, EstimatesBySteps) {
    EXPECT_LT(EstimateSecondsLeft({false, 5, 5, 14, 1, 9, 0, 0, 0, 3600}), 0);
    EXPECT_EQ(ProgressLine({false, 9, 5, 14, 1, 9, 0, 0, 0, 3600}, 200),  // four of ten are done
              "step 9 of 14, iteration 1, 1:00:00 elapsed, about 1:30:00 left");
}

}  // namespace
}  // namespace kaldra
