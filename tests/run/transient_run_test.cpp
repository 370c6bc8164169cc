// Transient runs from Start to "Done.": steps, files, halts, stops and restarts.

#include <algorithm>

#include "frontend/commands.h"
#include "platform/number_text.h"
#include "run/run_state.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using testing::HasSubstr;

class TransientRun : public KaldraTest {
protected:
    // The column of two squares, insulated but for 10 that flow into it at the top; heat capacity 2.
    static Problem HeatedColumn(const Rows& times) {
        Problem column = Stack({"0 0 0 0 1 -3", "0 0 0 0 1 -3", "5 2 0 0 1 -3"});
        column.analysis = "2 1 0 1 0";
        column.materials = {"1 1 1 2 2 0"};
        column.S = {FunctionRows(1, {"-100 0", "100 1"})};
        column.times = times;
        column.converge = "30 0.001 4";
        return column;
    }
    [[nodiscard]] int LinesOfStep(int step) const {
        const std::string begin = FormatText("%5d\t", step);
        return static_cast<int>(
            std::ranges::count_if(recorder.status, [&](const std::string& line) { return line.starts_with(begin); }));
    }
};

// 10 per unit time into a capacity of 2 times 2: 2.5 degrees per unit time, whatever the steps and the distribution.
TEST_F(TransientRun, StoresWhatFlowsIn) {
    for (const Rows& times : {Rows{"1 3 3"}, Rows{"1 1 1", "2 0.5 1.5", "3 1.5 3"}, Rows{"1 1 1", "2 0 1", "3 2 3"}}) {
        const Outcome run = Run(HeatedColumn(times));
        ASSERT_EQ(run.result, 1);
        const auto& nodes = run.model.nodeStates;
        for (const std::size_t side : {0U, 1U}) {  // the middle node stands for two squares
            const float sum = nodes[side].temperature + 2 * nodes[2 + side].temperature + nodes[4 + side].temperature;
            EXPECT_NEAR(sum / 4, -3 + 7.5, 2e-5);
        }
        EXPECT_GT(nodes[5].temperature, nodes[0].temperature + 1);
    }
}

// Convergence, nothing to switch, and convergence once more: three iterations at least, of which the first counts 1000.
TEST_F(TransientRun, SavedStepsLeaveFilesAndAllStepsLines) {
    Rows times;
    for (int i = 1; i <= 100; ++i) {
        times.push_back(FormatText("%d 1 %d %d", i, i, i == 9 || i == 10 || i == 100 ? 1 : 0));
    }
    Problem column = HeatedColumn(times);
    column.flux = {"1 1\n1 -1 1.5 2 1.5"};
    ASSERT_EQ(Run(column).result, 1);
    for (const char letter : {'t', 'g', 'r', 'j'}) {
        for (const char* step : {"09", "10", "100"}) EXPECT_TRUE(HasFile(std::string("case.") + letter + step));
        for (const char* step : {"01", "08", "11", "99"}) EXPECT_FALSE(HasFile(std::string("case.") + letter + step));
    }
    EXPECT_THAT(ReadFile("case.t100"), HasSubstr("\r\n100   +1.0000E+002  = Step Number, Elapsed time\r\n"));
    EXPECT_EQ(LinesOfStep(50), 3);
    EXPECT_EQ(runState.unconvergedSteps, 0);
    EXPECT_THAT(ReadFile("case.tin"), HasSubstr("Node#  Temp           Flux(Q)        Sum_Volume\r\n"
                                                "==================================================\r\n"
                                                "    1 -3.000000E+000 +0.000000E+000 +0.000000E+000 \r\n"));
    // Three quarters of the column lie behind the section at 1.5, so 7.5 of the 10 pass it. What the capacity of the
    // crossed element couples across it is a sixth of 2 at each side, at 2.5 degrees per unit time.
    EXPECT_THAT(ReadFile("case.j100"), HasSubstr("Section     1 :   6.6667E+000   7.5000E+000  -8.333"));
}

TEST_F(TransientRun, EndsEveryStepAtMaxIterations) {
    Problem column = HeatedColumn({"1 1 1", "2 1 2", "3 1 3"});
    column.converge = "1 0.001 4";
    EXPECT_EQ(Run(column).result, 1);
    EXPECT_EQ(runState.unconvergedSteps, 3);
    EXPECT_EQ(runState.firstUnconvergedStep, 1);
    EXPECT_EQ(recorder.status.size(), 5U);  // Solving..., a line a step, Done.
}

TEST_F(TransientRun, FreezesByStages) {
    const Outcome run = Run(FreezingSquare(3, 20));
    ASSERT_EQ(run.result, 1);
    EXPECT_LT(run.model.nodeStates[8].temperature, 0);
    EXPECT_GT(run.model.nodeStates[0].temperature, 0);
    const auto established = std::ranges::count(recorder.status, "Phase change region established.");
    EXPECT_EQ(established, 20);
    EXPECT_EQ(runState.unconvergedSteps, 0);
    // Without its latent heat the same ground freezes deeper.
    Problem dry = FreezingSquare(3, 20);
    dry.analysis = "2 1 0 1 0";
    const Outcome other = Run(dry);
    EXPECT_LT(other.model.nodeStates[4].temperature, run.model.nodeStates[4].temperature - 0.5F);
}

TEST_F(TransientRun, HaltEndsTheStepAndTheRunGoesOn) {
    ASSERT_EQ(Run(FreezingSquare(3, 6)).result, 1);
    for (const int step : {3, 4}) {
        ASSERT_GT(LinesOfStep(step), 3);
        const bool saved = step == 3;
        PressBehind(FormatText("%5d\t2\t", step), HaltIteration);
        ASSERT_EQ(Run(FreezingSquare(3, 6)).result, 1);
        EXPECT_THAT(recorder.status,
                    testing::Contains(saved ? "Halting iteration and writing files to complete time step..."
                                            : "Halting iteration to complete time step..."));
        EXPECT_EQ(LinesOfStep(step), 2);
        EXPECT_GE(LinesOfStep(step + 1), 3);
        EXPECT_EQ(HasFile(FormatText("case.t%02d", step)), saved);
        EXPECT_TRUE(runState.haltRequested == 0 && runState.unconvergedSteps == 0);
    }
}

// Halt Iteration is off in the first iteration of every step and on from the second.
TEST_F(TransientRun, HaltIsOffInFirstIterations) {
    std::vector<bool> first;
    std::vector<bool> later;
    recorder.onStatus = [&](std::string_view text) {
        if (text.find('\t') == std::string_view::npos) return;
        (text.find("\t1\t") != std::string_view::npos ? first : later).push_back(recorder.haltEnabled);
    };
    ASSERT_EQ(Run(FreezingSquare(3, 4)).result, 1);
    EXPECT_THAT(first, testing::AllOf(testing::SizeIs(4), testing::Each(false)));
    EXPECT_THAT(later, testing::Each(true));
}

TEST_F(TransientRun, StopKeepsTheStepsBefore) {
    for (const char* line : {"Solving...", "    1\t1\t", "    4\t2\t", "    5\t1\t", "Phase change"}) {
        PressBehind(line, Stop);
        const Outcome run = Run(FreezingSquare(3, 6));
        EXPECT_EQ(run.result, 0) << line;
        EXPECT_THAT(recorder.status, testing::Contains("Stopping..."));
        EXPECT_EQ(HasFile("case.t03"), line[4] == '4' || line[4] == '5') << line;
        EXPECT_FALSE(HasFile("case.t05"));
        recorder.status.clear();
    }
}

}  // namespace
}  // namespace kaldra
