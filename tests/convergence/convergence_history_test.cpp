#include "convergence/convergence_history.h"

#include <filesystem>

#include "convergence/graph_memory.h"
#include "platform/faults.h"
#include "support/convergence_text.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

class ConvergenceHistory : public KaldraTest {
protected:
    // The history of a problem with two steps in its time sequence.
    void Have(std::int32_t kind, const std::string& text) {
        model.analysisType = kind;
        model.stepCount = 2;
        model.dataFileName = Path("case.kdr");
        WriteFile("case.cnp", text);
    }

    static std::vector<std::int32_t> Listed(const std::vector<std::int32_t>& table) {
        return {table.begin(), table.begin() + graphMemory.GraphStepCount};
    }

    static std::vector<double> Curve(const std::vector<double>& table) {
        return {table.begin(), table.begin() + graphMemory.GraphPointCount};
    }
};

TEST_F(ConvergenceHistory, ListsTheStepsOfARestartedRunAndLoadsOneOfThem) {
    Have(transient, ConvergenceText({{5, {50, 51.5}}, {6, {60}}, {9, {90, 91, 92.25}}}));
    ASSERT_EQ(ScanConvergenceFile(), 1);
    EXPECT_THAT(Listed(graphMemory.GraphStepList), ElementsAre(5, 6, 9));  // more than stepCount
    EXPECT_THAT(Listed(graphMemory.GraphStepIterations), ElementsAre(2, 1, 3));
    EXPECT_EQ(graphMemory.GraphFirstIteration, 1);
    EXPECT_EQ(graphMemory.GraphLastIteration, 3);
    EXPECT_EQ(graphMemory.GraphPointCount, 3);
    EXPECT_GE(graphMemory.GraphNorms.size(), 3U);

    ASSERT_EQ(LoadConvergenceStep(5), 1);
    EXPECT_THAT(Curve(graphMemory.GraphIterations), ElementsAre(1, 2));
    EXPECT_THAT(Curve(graphMemory.GraphNorms), ElementsAre(50, 51.5));
    ASSERT_EQ(LoadConvergenceStep(9), 1);
    EXPECT_THAT(Curve(graphMemory.GraphNorms), ElementsAre(90, 91, 92.25));
    ASSERT_EQ(LoadConvergenceStep(7), 1);  // not in the list
    EXPECT_THAT(Curve(graphMemory.GraphNorms), ElementsAre());
}

TEST_F(ConvergenceHistory, ASteadyStateFileIsOneStep) {
    Have(steadyState, ConvergenceText({{0, {3, 2, 1}}}));
    ASSERT_EQ(ScanConvergenceFile(), 1);
    EXPECT_THAT(Listed(graphMemory.GraphStepList), ElementsAre(0));
    ASSERT_EQ(LoadConvergenceStep(0), 1);
    EXPECT_THAT(Curve(graphMemory.GraphNorms), ElementsAre(3, 2, 1));
}

TEST_F(ConvergenceHistory, LinesOfAnEarlierStepArePassedOver) {
    Have(transient, ConvergenceText({{2, {1, 2}}, {1, {7, 7}}, {3, {3}}}));
    ASSERT_EQ(ScanConvergenceFile(), 1);
    EXPECT_THAT(Listed(graphMemory.GraphStepList), ElementsAre(2, 3));
    EXPECT_THAT(Listed(graphMemory.GraphStepIterations), ElementsAre(2, 1));
}

TEST_F(ConvergenceHistory, ADamagedFileIsRefusedAndChangesNothing) {
    struct Damage {
        std::int32_t kind;
        std::string text;
        std::string line;  // that the message shows
    };
    const std::string whole = ConvergenceText({{1, {1, 2}}});
    const std::string header = whole.substr(0, whole.find(" StepNum"));
    for (const Damage& damage : {
             Damage{transient, "", ""},
             Damage{transient, "no line\r\nof equal signs\r\n", "of equal signs"},
             Damage{transient, header.substr(0, header.size() - 5), std::string(77, '=')},
             Damage{transient, header, "   "},
             Damage{transient, header + "Phase change region established.\r\n", "Phase change region established."},
             Damage{transient, header + " StepNum:     1 ItNum:     2", " StepNum:     1 ItNum:     2"},
             Damage{steadyState, ConvergenceText({{0, {1}}}), "Phase change region established."},
         }) {
        Have(damage.kind, damage.text);
        EXPECT_EQ(ScanConvergenceFile(), 0);
        EXPECT_EQ(TakeText(1153), "Cannot read Convergence file, check line:\n" + damage.line);
        EXPECT_EQ(graphMemory.GraphStepCount, 0);
    }
}

TEST_F(ConvergenceHistory, AFileThatLostLinesSinceItsScanGivesTheCurveThatIsLeft) {
    Have(transient, ConvergenceText({{1, {1, 2, 3}}}));
    ASSERT_EQ(ScanConvergenceFile(), 1);
    WriteFile("case.cnp", ConvergenceText({{1, {1, 2}}}));
    ASSERT_EQ(LoadConvergenceStep(1), 1);
    EXPECT_THAT(Curve(graphMemory.GraphNorms), ElementsAre(1, 2));
}

// Whatever fails, a message tells it, with the mutex free, and no count goes past its table.
TEST_F(ConvergenceHistory, SurvivesEveryFailureOfFileAndMemory) {
    Have(transient, ConvergenceText({{1, {1, 2, 3}}, {2, {4}}}));
    frontEnd.ShowMessage = [](const MessageBox&) { EXPECT_TRUE(GraphMemoryIsFree()); };
    for (const FaultSeam seam : {FaultSeam::FileCall, FaultSeam::Allocation}) {
        int result = 0;
        for (std::int64_t call = 1; result == 0; ++call) {
            ASSERT_LT(call, 100);
            ArmFault(seam, call);
            result = ScanConvergenceFile() && LoadConvergenceStep(1);
            ArmFault(seam, 0);
            EXPECT_LE(static_cast<std::size_t>(graphMemory.GraphPointCount), graphMemory.GraphNorms.size());
            EXPECT_LE(static_cast<std::size_t>(graphMemory.GraphPointCount), graphMemory.GraphIterations.size());
            EXPECT_LE(static_cast<std::size_t>(graphMemory.GraphStepCount), graphMemory.GraphStepIterations.size());
        }
    }
    ASSERT_TRUE(std::filesystem::remove(Path("case.cnp")));
    frontEnd.ShowMessage = [](const MessageBox& box) { EXPECT_EQ(box.number, 1025); };
    EXPECT_EQ(ScanConvergenceFile(), 0);
}

}  // namespace
}  // namespace kaldra
