// Runs from Open to "Done.", with the front end on the test's thread.

#include <cmath>

#include "frontend/commands.h"
#include "platform/number_text.h"
#include "run/run_state.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

class SteadyRun : public KaldraTest {
protected:
    bool LeavesNothing() { return !HasFile("case.t00") && !HasFile("case.lkp"); }
};

const std::string iteration1 = "    0\t1\t1.500000E+001";
const std::string iteration2 = "    0\t2\t1.500000E+001\t0.0000E+000";

// -1, 4 and 9 degrees: the squares of the six nodes add up to 196. The gradient of 5 drives 10 through the column of
// conductivity 2, half of it through each node of an end. The zeros in x are reversed like all values, and the
// section's line through the lower square goes from left to right with the warm side left of it.
TEST_F(SteadyRun, LeavesItsFilesToTheByte) {
    Problem column = Column();
    column.flux = {"1 1\n1 -1 0.5 2 0.5", "2 1\n1 5 5 6 6"};
    ASSERT_EQ(OpenDataFile(WriteFile("case.kdr", column.Text())), 1);
    for (int round = 0; round < 2; ++round) {  // a second Start reads the file again
        EXPECT_EQ(RunOpened().result, 1);
        EXPECT_THAT(recorder.status, ElementsAre("Solving...", iteration1, iteration2, "Done."));
        EXPECT_TRUE(runState.iteration == 3 && model.nodeCount == 0);  // nothing of the model remains
    }
    const std::string header =
        "Title\r\nsubtitle\r\ncase\r\nrevision\r\n0   +0.0000E+000  = Step Number, Elapsed time\r\n";
    EXPECT_EQ(ReadFile("case.t00"), header + "   \r\nNode#  Temperature    Heat_Flux(Q)\r\n" + std::string(35, '=') +
                                        "\r\n"
                                        "    1 -1.000000E+000 -5.000000E+000\r\n"
                                        "    2 -1.000000E+000 -5.000000E+000\r\n"
                                        "    3 +4.000000E+000 +0.000000E+000\r\n"
                                        "    4 +4.000000E+000 +0.000000E+000\r\n"
                                        "    5 +9.000000E+000 +5.000000E+000\r\n"
                                        "    6 +9.000000E+000 +5.000000E+000\r\n"
                                        "    7 -2.500000E+000 +0.000000E+000\r\n");
    std::string gradients = header + "   \r\nElem# Pnt#  Unit Flux X    Unit Flux Y    Gradient X     Gradient Y \r\n" +
                            std::string(70, '=') + "\r\n";
    for (int e = 1; e <= 4; ++e) {
        gradients += FormatText("%5d    1 -0.000000E+000 -1.000000E+001 -0.000000E+000 -5.000000E+000\r\n", e);
    }
    std::string found = ReadFile("case.g00");
    for (std::size_t at = 0; (at = found.find("+0.000000E+000", at)) != std::string::npos;)
        found[at] = '-';  // sum of 0
    EXPECT_EQ(found, gradients);
    EXPECT_THAT(ReadFile("case.r00"),
                testing::HasSubstr(
                    std::string(85, '=') +
                    "\r\n    1    1 +6.666667E-001 +2.000000E+000 +0.000000E+000 +0.000000E+000 +0.000000E+000\r\n"));
    EXPECT_EQ(ReadFile("case.j00"), header + "  \r\nFlux Summary Data:   Total       Heat_Flux     Storage\r\n" +
                                        std::string(57, '=') +
                                        "\r\n  \r\n"
                                        "Section     1 :   1.0000E+001   1.0000E+001  -0.0000E+000\r\n  \r\n"
                                        "Section     2 :   0.0000E+000   0.0000E+000   0.0000E+000\r\n  \r\n"
                                        "Section  Element     Total       Heat_Flux     Storage\r\n" +
                                        std::string(57, '=') +
                                        "\r\n   1        1    -5.0000E+000  -5.0000E+000  +0.0000E+000\r\n"
                                        "   1        2    -5.0000E+000  -5.0000E+000  +0.0000E+000\r\n");
}

TEST_F(SteadyRun, StopLeavesNoResults) {
    PressBehind("Solving...", Stop);
    EXPECT_EQ(Run(Column()).result, 0);
    EXPECT_THAT(recorder.status, ElementsAre("Solving...", "Stopping...", "Done."));
    PressBehind(iteration2, Stop);  // it has converged, and would write
    EXPECT_EQ(Run(Column()).result, 0);
    EXPECT_THAT(recorder.status, ElementsAre("Solving...", iteration1, iteration2, "Stopping...", "Done."));
    EXPECT_TRUE(LeavesNothing());
}

// At 0 degrees in one end and 100 in the other, conductivity 1 + T/50: T + T^2/100 is linear (Kirchhoff), so that the
// middle is at 50 (sqrt 5 - 1) in the limit of fine elements, and the flow is the mean conductivity's 2 * 100.
TEST_F(SteadyRun, IteratesToTheKirchhoffSolutionUnlessHalted) {
    constexpr int n = 40;
    Rows boundaries(n + 1, "0 0 0 0 0 0");
    boundaries.front() = "0 1 0 0 0 0";
    boundaries.back() = "100 1 0 0 0 0";
    Problem column = Stack(boundaries, 1.0 / n);
    column.K = {FunctionRows(1, {"0 1", "100 3"})};
    column.converge = "50 1E-5 0";
    const auto middle = [&] {
        const Outcome run = Run(column);
        EXPECT_EQ(run.result, 1);
        return run.model.nodeStates[n].temperature;
    };
    const Outcome whole = Run(column);
    EXPECT_NEAR(whole.model.nodeStates[n].temperature, 50 * (std::sqrt(5.0) - 1), 0.02);
    EXPECT_NEAR(whole.model.SolutionVector[0] + whole.model.SolutionVector[1], -200, 0.1);
    const Rows status = recorder.status;
    ASSERT_GT(status.size(), 6U);

    PressBehind("Solving...", HaltIteration);  // forgotten: the loop clears it before its first iteration
    EXPECT_EQ(middle(), whole.model.nodeStates[n].temperature);
    PressBehind("    0\t1", HaltIteration);  // with the conductivity of 1 at the start the field is still linear
    EXPECT_NEAR(middle(), 50, 1e-3);
    EXPECT_THAT(recorder.status, ElementsAre("Solving...", status[1],
                                             "Halting iteration and writing files to complete time step...", "Done."));
    EXPECT_EQ(runState.unconvergedSteps, 0);
}

TEST_F(SteadyRun, MaxIterationsIsNoFailure) {
    for (const auto& [iterations, unconverged] : {std::pair{"0", 1}, {"1", 1}, {"2", 0}}) {
        Problem column = Column();
        column.converge = std::string(iterations) + " 0.01 0";
        EXPECT_EQ(Run(column).result, 1);
        EXPECT_EQ(runState.unconvergedSteps, unconverged) << iterations;
        if (*iterations != '0') continue;
        EXPECT_THAT(recorder.status, ElementsAre("Solving...", "Done."));
        EXPECT_FALSE(HasFile("case.cnp"));
        EXPECT_TRUE(ReadFile("case.t00")
                        .ends_with("    6 +0.000000E+000 +0.000000E+000\r\n"
                                   "    7 -2.500000E+000 +0.000000E+000\r\n"));  // the initial ones
    }
}

TEST_F(SteadyRun, FailuresOnTheThreadEndTheRun) {
    Problem hot = Column(1e20, 1e20), cold = Column(), insideOut = Column(), timed = Column(), unknown = Column();
    cold.K = {FunctionRows(1, {"0 0", "1 0"})};
    insideOut.elements[1] = "2 1 3 4 0 0 0 0 0 1 1 1";
    timed.B = {"1 2 0 0 0 0\nfunction\n0 3\n1 3"};
    timed.nodes[1] = "2 1 0 0 1 1 0 0 0";
    unknown.analysis = "3 1 0 1 0";  // comes to nothing without a word
    const std::vector<std::pair<Problem, std::vector<int>>> cases{
        {unknown, {}}, {hot, {1136}}, {cold, {1171}}, {insideOut, {1194}}, {timed, {1029}}};
    for (const auto& [problem, messages] : cases) {
        const Outcome run = Run(problem);
        EXPECT_TRUE(run.started && run.result == 0);
        EXPECT_EQ(TakeMessages(), messages);
        EXPECT_EQ(recorder.status.back(), "Done.");
        EXPECT_TRUE(LeavesNothing());
    }
}

}  // namespace
}  // namespace kaldra
