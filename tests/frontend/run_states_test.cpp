// What the front end may do in each state of a run, with the calculation thread held at its first line.
#include <future>
#include <set>

#include "convergence/graph_memory.h"
#include "frontend/commands.h"
#include "frontend/graph.h"
#include "frontend/panel.h"
#include "platform/files.h"
#include "run/analysis.h"
#include "run/run_state.h"
#include "support/chart_operations.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class RunStates : public KaldraTest {
protected:
    RunStates() {
        ChartOperations::Connect();
        frontEnd.CloseGraphWindow = [] { GraphWindowGone(); };
    }
    ~RunStates() override { chartService = {}; }

    static std::set<int> Enabled() {
        std::set<int> ids;
        for (const MenuItem& item : MainMenu()) {
            if (IsCommandEnabled(item.id)) ids.insert(item.id);
        }
        for (const PanelControl& button : PanelButtons()) {
            if (IsCommandEnabled(button.id)) ids.insert(button.id);
        }
        for (const int id : {commandHelpTopics, commandUsingHelp, commandAbout}) EXPECT_EQ(ids.erase(id), 1U);
        return ids;
    }

    std::string Transient() const {
        Problem problem = Column(1, 3);
        problem.analysis = "2 1 0 1 0";
        problem.times = {"1 0.5 0.5 1"};
        return WriteFile("case.kdr", problem.Text());
    }

    // Starts the open document; its thread stands still until Release.
    void StartAndHold() {
        recorder.onStatus = [this](std::string_view line) {
            if (line == "Solving...") released.get_future().wait();
        };
        ASSERT_EQ(Start(), 1);
    }
    void Release() {
        released.set_value();
        ASSERT_TRUE(WaitForPost());
    }

    std::promise<void> released;
};

TEST_F(RunStates, EnableTheseCommands) {
    using Ids = std::set<int>;
    EXPECT_EQ(Enabled(), (Ids{commandOpenDataFile, commandExit}));

    ASSERT_EQ(OpenDataFile(WriteFile("steady.kdr", Column(1, 3).Text())), 1);
    EXPECT_EQ(Enabled(), (Ids{commandNew, commandOpenDataFile, commandExit, commandStart}));
    ASSERT_EQ(OpenChosenFile(Transient()), 1);
    const Ids ready{commandNew,  commandOpenDataFile, commandOpenInitialConditions,
                    commandExit, commandStartTime,    commandStart};
    EXPECT_EQ(Enabled(), ready);
    EXPECT_TRUE(MayEndSession());

    StartAndHold();
    const Ids running{commandStop, commandHaltIteration, commandGraph};
    EXPECT_EQ(Enabled(), running);
    EXPECT_FALSE(MayEndSession());
    Stop();
    EXPECT_EQ(Enabled(), running);  // stopping
    EXPECT_FALSE(MayEndSession());
    const std::vector<MessageBox> boxes = TakeBoxes();
    ASSERT_EQ(boxes.size(), 2U);
    EXPECT_EQ(boxes[0].caption, "KALDRA SOLVE - ");
    EXPECT_EQ(boxes[0].text, "Computation in progress.\nPress STOP before closing Windows.");

    Release();
    EXPECT_EQ(Enabled(), running);  // until the thread has been waited for
    HandleCalcThreadMsg(runFinishedMessage, 0);
    EXPECT_EQ(Enabled(), ready);
    runState.convergenceFileExists = 1;
    EXPECT_TRUE(IsCommandEnabled(commandGraph));
}

TEST_F(RunStates, TheGraphLeavesTheTablesOfARunAlone) {
    ASSERT_EQ(OpenDataFile(Transient()), 1);
    StartAndHold();
    Stop();  // running is 0, and the thread lives
    OpenGraph();
    UpdateGraph();
    EXPECT_THAT(ChartOperations::Take(), Not(Contains("Begin")));
    EXPECT_EQ(model.nodeCount, 7);
    EXPECT_FALSE(IsCommandEnabled(commandGraph));
    CloseGraph();
    EXPECT_EQ(model.nodeCount, 7);
    EXPECT_TRUE(IsCommandEnabled(commandGraph));
    Release();
    HandleCalcThreadMsg(runFinishedMessage, 0);
}

// The curve is drawn while the calculation thread waits, one point longer each time.
TEST_F(RunStates, TheLiveCurveGrows) {
    ASSERT_EQ(OpenDataFile(WriteFile("case.kdr", Column(1, 3).Text())), 1);
    recorder.onGraphData = [] { DrawGraphData(); };
    StartAndHold();
    OpenGraph();
    released.set_value();
    ASSERT_TRUE(WaitForPost());
    std::vector<std::string> counts;
    for (const std::string& operation : ChartOperations::Take()) {
        if (operation.starts_with("YData")) counts.push_back(operation.substr(0, 9));
    }
    EXPECT_THAT(counts, ElementsAre("YData 1 1", "YData 2 1"));
    HandleCalcThreadMsg(runFinishedMessage, recorder.result);
    CloseGraph();
    EXPECT_TRUE(IsCommandEnabled(commandGraph));
}

// The data file is locked from Start to "Done.", and a run that another one keeps from starting changes nothing.
TEST_F(RunStates, OneRunAtATimeWorksOnADataFile) {
    ASSERT_EQ(OpenDataFile(WriteFile("case.kdr", Column().Text())), 1);
    FileLock other;
    ASSERT_EQ(other.Take(Path("case.kdr")), FileLock::Result::Held);
    EXPECT_EQ(Start(), 0);
    EXPECT_EQ(TakeMessages(), std::vector<int>{5001});
    EXPECT_FALSE(HasFile("case.cnp") || RunUnderWay());
    other.Release();
    StartAndHold();
    EXPECT_EQ(other.Take(Path("case.kdr")), FileLock::Result::HeldElsewhere);
    Release();
    HandleCalcThreadMsg(runFinishedMessage, 1);
    EXPECT_EQ(other.Take(Path("case.kdr")), FileLock::Result::Held);
}

}  // namespace
}  // namespace kaldra
