#include "convergence/convergence_monitor.h"

#include "convergence/graph_memory.h"
#include "platform/faults.h"
#include "run/run_state.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

// Two nodes and a third without an equation. With temperatures 0 and T the norm is |T| + 1.
class ConvergenceMonitor : public KaldraTest {
protected:
    ConvergenceMonitor() {
        model.baseName = Path("case");
        model.nodeCount = 3;
        model.nodeStates = {{0, 0, 0}, {0, 0, 0}, {1e30F, 0, 0}};
        model.EquationCode = {0, 1, 9};
        model.tolerance = 20;
    }
    int Monitor(std::int32_t iteration, float temperature) {
        runState.iteration = iteration;
        model.nodeStates[1].temperature = temperature;
        return MonitorConvergence();
    }
};

TEST_F(ConvergenceMonitor, ConvergesBelowTheToleranceOnly) {
    EXPECT_EQ(Monitor(1, -4), 0);
    EXPECT_TRUE(convergence.ConvergenceNorm == 5 && convergence.change == 1000);
    EXPECT_EQ(Monitor(2, 3), 0);  // exactly 20 per cent
    EXPECT_EQ(Monitor(3, 3.5F), 1);
    EXPECT_EQ(runState.PhaseChangeMode, phaseSearching);
    runState.PhaseChangeMode = phaseEstablished;
    EXPECT_EQ(Monitor(4, 9), 0);
    EXPECT_EQ(runState.PhaseChangeMode, phaseEstablished);
    EXPECT_EQ(Monitor(5, 9), 1);
    EXPECT_EQ(runState.PhaseChangeMode, phaseEnded);
    model.tolerance = 1000;
    EXPECT_EQ(Monitor(1, 0), 0);
    model.tolerance = 0;
    EXPECT_EQ(Monitor(2, 0), 0);  // a change cannot be below 0
    EXPECT_EQ(convergence.ConvergenceNorm, 1);
}

TEST_F(ConvergenceMonitor, RecordsEveryIteration) {
    model.titleLine[0] = "One";
    WriteFile("case.cnp", "an older run\n");
    (void)Monitor(1, 4);
    (void)Monitor(2, 3);
    runState.currentStep = 12;  // a later step goes on in the same file
    (void)Monitor(1, 99);
    runState.currentStep = runState.startStep = 7;
    const std::string lines =
        "   \r\n StepNum:     0 ItNum:     1 Vector Norm: 5.000000E+000\r\n"
        " StepNum:     0 ItNum:     2 Vector Norm: 4.000000E+000 %Change:  2.0000E+001 \r\n"
        "   \r\n StepNum:    12 ItNum:     1 Vector Norm: 1.000000E+002\r\n";
    const std::string header =
        "One\r\n\r\n\r\n\r\n  \r\n  \r\nConvergence information.\r\n" + std::string(77, '=') + "\r\n";
    EXPECT_EQ(ReadFile("case.cnp"), header + lines);
    EXPECT_THAT(recorder.status, ElementsAre("    0\t1\t5.000000E+000", "    0\t2\t4.000000E+000\t2.0000E+001",
                                             "   12\t1\t1.000000E+002"));
    EXPECT_EQ(runState.convergenceFileExists, 1);
    (void)Monitor(1, 1);  // the first step of a restarted run begins the file anew
    EXPECT_EQ(ReadFile("case.cnp"), header + "   \r\n StepNum:     7 ItNum:     1 Vector Norm: 2.000000E+000\r\n");
}

TEST_F(ConvergenceMonitor, ASolutionThatIsNoNumberEndsTheRun) {
    for (const float bad : {1e20F, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
        for (const std::int32_t iteration : {1, 2}) EXPECT_EQ(Monitor(iteration, bad), -1);
    }
    EXPECT_THAT(TakeMessages(), ElementsAre(1136, 1136, 1136, 1136, 1136, 1136));
    EXPECT_EQ(graphMemory.GraphPointCount, 0);
    EXPECT_TRUE(recorder.status.empty());
    EXPECT_TRUE(ReadFile("case.cnp").ends_with("=\r\n"));
}

TEST_F(ConvergenceMonitor, ACurveThatCannotGrowSkipsTheIteration) {
    (void)Monitor(1, 4);
    const std::string before = ReadFile("case.cnp");
    ArmFault(FaultSeam::Allocation, 1);
    EXPECT_EQ(Monitor(2, 4), 0);  // converged, but not taken for it
    EXPECT_THAT(TakeMessages(), ElementsAre(1138));
    EXPECT_EQ(ReadFile("case.cnp"), before);
    EXPECT_EQ(graphMemory.GraphPointCount, 1);
    EXPECT_EQ(Monitor(3, 4), 1);
    EXPECT_THAT(graphMemory.GraphIterations, ElementsAre(1, 0, 3));
}

TEST_F(ConvergenceMonitor, RedrawsByTheGraphsRule) {
    std::string redrawn;
    recorder.onGraphData = [&] { redrawn += std::to_string(runState.iteration) + ' '; };
    const auto run = [&](std::int32_t first, std::int32_t interval, std::int32_t mode) {
        graphMemory.GraphFirstIteration = first;
        graphMemory.GraphUpdateInterval = interval;
        graphMemory.GraphUpdateMode = mode;
        redrawn.clear();
        for (std::int32_t iteration = 1; iteration <= 9; ++iteration) (void)Monitor(iteration, 1);
        return redrawn;
    };
    graphMemory.GraphLastIteration = 5;
    EXPECT_EQ(run(1, 1, graphAutomatically), "");
    graphMemory.GraphWindow = 1;
    EXPECT_EQ(run(1, 3, graphAutomatically), "1 4 ");
    EXPECT_EQ(run(4, 2, graphAutomatically), "2 4 ");
    EXPECT_EQ(run(1, 1, graphManually), "");
}

}  // namespace
}  // namespace kaldra
