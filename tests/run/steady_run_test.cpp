// Runs from Open to "Done.", with the front end on the test's thread.

#include <cmath>
#include <filesystem>

#include "frontend/commands.h"
#include "platform/number_text.h"
#include "run/analysis.h"
#include "run/run_state.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

class SteadyRun : public KaldraTest {
protected:
    // Presses a button once, behind the status line that begins so.
    void PressBehind(std::string_view line, void (*press)()) {
        recorder.onStatus = [=, pressed = false](std::string_view text) mutable {
            if (!text.starts_with(line) || std::exchange(pressed, true)) return;
            press();
        };
    }
    bool LeavesNothing() { return !HasFile("case.t00") && !HasFile("case.lkp"); }
};

const std::string iteration1 = "    0\t1\t1.500000E+001";
const std::string iteration2 = "    0\t2\t1.500000E+001\t0.0000E+000";

// -1, 4 and 9 degrees: the squares of the six nodes add up to 196. The gradient of 5 drives 10 through the column, half
// of it through each node of an end.
TEST_F(SteadyRun, LeavesItsFilesToTheByte) {
    ASSERT_EQ(OpenDataFile(WriteFile("case.kdr", Column().Text())), 1);
    for (int round = 0; round < 2; ++round) {  // a second Start reads the file again
        EXPECT_EQ(RunOpened().result, 1);
        EXPECT_THAT(recorder.status, ElementsAre("Solving...", iteration1, iteration2, "Done."));
        EXPECT_EQ(ReadFile("case.cnp"),
                  "Title\r\nsubtitle\r\ncase\r\nrevision\r\n  \r\n  \r\nConvergence information.\r\n"
                  "=============================================================================\r\n"
                  "   \r\n"
                  " StepNum:     0 ItNum:     1 Vector Norm: 1.500000E+001\r\n"
                  " StepNum:     0 ItNum:     2 Vector Norm: 1.500000E+001 %Change:  0.0000E+000 \r\n");
        EXPECT_EQ(ReadFile("case.t00"),
                  "Title\r\nsubtitle\r\ncase\r\nrevision\r\n0   +0.0000E+000  = Step Number, Elapsed time\r\n"
                  "   \r\n"
                  "Node#  Temperature    Heat_Flux(Q)\r\n"
                  "===================================\r\n"
                  "    1 -1.000000E+000 -5.000000E+000\r\n"
                  "    2 -1.000000E+000 -5.000000E+000\r\n"
                  "    3 +4.000000E+000 +0.000000E+000\r\n"
                  "    4 +4.000000E+000 +0.000000E+000\r\n"
                  "    5 +9.000000E+000 +5.000000E+000\r\n"
                  "    6 +9.000000E+000 +5.000000E+000\r\n"
                  "    7 -2.500000E+000 +0.000000E+000\r\n");
        EXPECT_TRUE(runState.iteration == 3 && model.nodeCount == 0);  // nothing of the model remains
    }
}

TEST_F(SteadyRun, TheMarkerStandsWhileItRuns) {
    std::string seen = "none";
    recorder.onStatus = [&](std::string_view text) {
        if (text == iteration1 && HasFile("case.lkp")) seen = ReadFile("case.lkp");
    };
    WriteFile("case.lkp", "older");
    EXPECT_EQ(Run(Column()).result, 1);
    EXPECT_EQ(seen, "");
    EXPECT_FALSE(HasFile("case.lkp"));
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

// The front end's thread presses while the calculation thread waits for it in a status line.
TEST_F(SteadyRun, ButtonsPressedOnTheOtherThread) {
    for (const bool stop : {true, false}) {
        std::atomic<bool> reached = false, pressed = false;
        recorder.onStatus = [&](std::string_view text) {
            if (text != iteration1) return;
            reached = true;
            reached.notify_one();
            pressed.wait(false);
        };
        ASSERT_EQ(OpenDataFile(WriteFile("case.kdr", Column().Text())), 1);
        ASSERT_EQ(Start(), 1);
        reached.wait(false);
        const EnabledCommands now = CommandsNow();
        EXPECT_TRUE(CalcThreadLives() && recorder.haltEnabled && now.stop && now.haltIteration && now.graph);
        EXPECT_FALSE(now.start || now.newDocument || now.openDataFile || now.exit);
        stop ? Stop() : HaltIteration();
        EXPECT_EQ(CommandsNow().haltIteration, stop);  // Stop leaves the other buttons as they are
        EXPECT_TRUE(stop || !recorder.haltEnabled);
        pressed = true;
        pressed.notify_one();
        ASSERT_TRUE(WaitForPost());
        EXPECT_EQ(recorder.result, stop ? 0 : 1);
        HandleCalcThreadMsg(99, 0);  // no message of the calculation thread
        EXPECT_TRUE(CalcThreadLives());
        HandleCalcThreadMsg(runFinishedMessage, recorder.result);
        recorder.posts = 0;
        EXPECT_FALSE(CalcThreadLives());
        EXPECT_EQ(HasFile("case.t00"), !stop);
    }
}

// At 0 degrees in one end and 100 in the other, conductivity 1 + T/50: T + T^2/100 is linear (Kirchhoff), so that the
// middle is at 50 (sqrt 5 - 1) in the limit of fine elements, and the flow is the mean conductivity's 2 * 100.
TEST_F(SteadyRun, IteratesToTheKirchhoffSolutionUnlessHalted) {
    constexpr int n = 40;
    Problem column;
    column.K = {FunctionRows(1, {"0 1", "100 3"})};
    column.converge = "50 1E-5 0";
    for (int i = 0; i <= n; ++i) {
        for (const double x : {0.0, 1.0}) {
            const double y = static_cast<double>(i) / n;
            i == 0 || i == n ? column.FixedNode(x, y, 100 * y) : column.Node(x, y);
        }
        if (i > 0) column.Element(FormatText("%d %d %d %d 0 0 0 0", 2 * i + 2, 2 * i + 1, 2 * i - 1, 2 * i), 4);
    }
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
    Problem hot = Column(1e20, 1e20), cold = Column(), insideOut = Column(), timed = Column();
    cold.K = {FunctionRows(1, {"0 0", "1 0"})};
    insideOut.elements[1] = "2 1 3 4 0 0 0 0 0 1 1 1";
    timed.B = {"1 2 0 0 0 0\nfunction\n0 3\n1 3"};
    timed.nodes[1] = "2 1 0 0 1 1 0 0 0";
    for (const auto& [problem, message] : {std::pair{hot, 1136}, {cold, 1171}, {insideOut, 1194}, {timed, 1029}}) {
        EXPECT_EQ(Run(problem).result, 0);
        EXPECT_THAT(TakeMessages(), ElementsAre(message));
        EXPECT_EQ(recorder.status.back(), "Done.");
        EXPECT_TRUE(LeavesNothing());
    }
    std::filesystem::create_directory(Path("case.t00"));
    EXPECT_EQ(Run(Column()).result, 0);
    EXPECT_THAT(TakeMessages(), ElementsAre(1021));
    std::filesystem::remove(Path("case.t00"));
    std::filesystem::create_directory(Path("case.lkp"));  // whether the marker can be made changes nothing
    EXPECT_EQ(Run(Column()).result, 1);
}

TEST_F(SteadyRun, AnUnknownKindComesToNothing) {
    Problem column = Column();
    column.analysis = "3 1 0 1 0";
    const Outcome run = Run(column);
    EXPECT_TRUE(run.started && run.result == 0);
    EXPECT_THAT(recorder.status, ElementsAre("Solving...", "Done."));
    EXPECT_TRUE(LeavesNothing() && !HasFile("case.cnp"));
}

TEST_F(SteadyRun, CommandsFollowTheState) {
    const auto enabled = [] {
        const EnabledCommands e = CommandsNow();
        std::string letters;
        for (const auto& [on, letter] : {std::pair{e.newDocument, 'n'},
                                         {e.openDataFile, 'o'},
                                         {e.openInitialConditions, 'i'},
                                         {e.exit, 'x'},
                                         {e.startTime, 't'},
                                         {e.start, 's'},
                                         {e.stop, 'p'},
                                         {e.haltIteration, 'h'},
                                         {e.graph, 'g'}}) {
            if (on) letters += letter;
        }
        return letters;
    };
    EXPECT_EQ(enabled(), "ox");
    const std::string path = WriteFile("case.kdr", Column().Text());
    ASSERT_EQ(OpenDataFile(path), 1);
    EXPECT_EQ(enabled(), "noxs");
    EXPECT_EQ(runState.startStep, 0);
    WriteFile("case.cnp", "");
    ASSERT_EQ(OpenDataFile(path), 1);
    EXPECT_EQ(enabled(), "noxsg");
    std::filesystem::remove(path);
    EXPECT_EQ(Start(), 0);  // the file is gone: Ready, with empty tables
    EXPECT_EQ(enabled(), "noxsg");
    EXPECT_EQ(model.nodeCount, 0);
    EXPECT_EQ(OpenDataFile(path), 0);
    EXPECT_EQ(enabled(), "ox");
    EXPECT_EQ(model.dataFileName, "");
    EXPECT_THAT(TakeMessages(), ElementsAre(1020, 1020));

    Problem march = Column();
    march.analysis = "2 1 0 1 0";
    std::filesystem::remove(Path("case.cnp"));
    ASSERT_EQ(OpenDataFile(WriteFile("case.kdr", march.Text())), 1);
    EXPECT_EQ(enabled(), "noixts");
    EXPECT_EQ(runState.startStep, 1);
    NewDocument();
    EXPECT_EQ(enabled(), "ox");
}

}  // namespace
}  // namespace kaldra
