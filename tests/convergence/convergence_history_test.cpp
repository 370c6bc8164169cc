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

TEST_F(ConvergenceHistory, ListsTheStepsAndLoadsOneOfThem) {
    struct Written {
        std::int32_t kind;
        std::vector<StepHistory> history;
        std::vector<std::int32_t> steps, iterations;  // in the list
        std::int32_t step;                            // that is loaded
        std::vector<double> numbers, norms;
    };
    const std::vector<StepHistory> restarted{{5, {50, 51.5}}, {6, {60}}, {9, {90, 91, 92.25}}};  // beyond stepCount
    const std::vector<StepHistory> earlierWithin{{2, {1, 2}}, {1, {7, 7}}, {3, {3}}};            // passed over
    for (const Written& w : {Written{transient, restarted, {5, 6, 9}, {2, 1, 3}, 5, {1, 2}, {50, 51.5}},
                             {transient, restarted, {5, 6, 9}, {2, 1, 3}, 9, {1, 2, 3}, {90, 91, 92.25}},
                             {transient, restarted, {5, 6, 9}, {2, 1, 3}, 7, {}, {}},  // not in the list
                             {transient, earlierWithin, {2, 3}, {2, 1}, 3, {1}, {3}},
                             {steadyState, {{0, {3, 2, 1}}}, {0}, {3}, 0, {1, 2, 3}, {3, 2, 1}}}) {
        Have(w.kind, ConvergenceText(w.history));
        ASSERT_EQ(ScanConvergenceFile(), 1);
        EXPECT_EQ(Listed(graphMemory.GraphStepList), w.steps);
        EXPECT_EQ(Listed(graphMemory.GraphStepIterations), w.iterations);
        EXPECT_EQ(graphMemory.GraphFirstIteration, 1);
        EXPECT_EQ(graphMemory.GraphLastIteration, w.iterations.back());
        EXPECT_EQ(graphMemory.GraphPointCount, graphMemory.GraphLastIteration);
        EXPECT_GE(static_cast<std::int32_t>(graphMemory.GraphNorms.size()), graphMemory.GraphPointCount);
        ASSERT_EQ(LoadConvergenceStep(w.step), 1);
        EXPECT_EQ(Curve(graphMemory.GraphIterations), w.numbers);
        EXPECT_EQ(Curve(graphMemory.GraphNorms), w.norms);
    }
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
