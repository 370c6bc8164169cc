// What the front end may do in each state of a run, with the calculation thread held at its first line.
#include <filesystem>
#include <future>
#include <set>

#include "frontend/chart_drawing.h"
#include "frontend/commands.h"
#include "frontend/graph.h"
#include "frontend/panel.h"
#include "platform/files.h"
#include "run/analysis.h"
#include "run/run_state.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using Ids = std::set<int>;

const Ids untitled{commandOpenDataFile, commandExit};

class RunStates : public KaldraTest {
protected:
    RunStates() {
        ConnectChartRecorder();
        frontEnd.CloseGraphWindow = [] { GraphWindowGone(); };
    }

    static Ids Enabled() {
        Ids ids;
        for (const MenuItem& item : MainMenu()) {
            if (IsCommandEnabled(item.id)) ids.insert(item.id);
        }
        for (const PanelControl& button : PanelButtons()) {
            if (IsCommandEnabled(button.id)) ids.insert(button.id);
        }
        for (const int id : {commandHelpTopics, commandUsingHelp, commandAbout}) EXPECT_EQ(ids.erase(id), 1U);
        return ids;
    }

    std::string Transient() const { return WriteFile("case.kdr", TransientColumn({"1 0.5 0.5 1"}).Text()); }

    // Starts the open document; its thread stands still behind its first line until Release.
    void StartAndHold() {
        recorder.onStatus = [this](std::string_view line) {
            if (line != "Solving...") return;
            holds.set_value();
            released.get_future().wait();
        };
        ASSERT_EQ(Start(), 1);
        holds.get_future().wait();
    }
    void Release() {
        released.set_value();
        WaitForPost();
    }

    std::promise<void> holds, released;
};

TEST_F(RunStates, FollowTheDocument) {
    EXPECT_EQ(Enabled(), untitled);
    const std::string path = WriteFile("case.kdr", Column().Text());
    ASSERT_EQ(OpenDataFile(path), 1);
    EXPECT_EQ(Enabled(), (Ids{commandNew, commandOpenDataFile, commandExit, commandStart}));
    EXPECT_EQ(runState.startStep, 0);
    WriteFile("case.cnp", "");
    ASSERT_EQ(OpenDataFile(path), 1);
    const Ids withHistory{commandNew, commandOpenDataFile, commandExit, commandStart, commandGraph};
    EXPECT_EQ(Enabled(), withHistory);
    std::filesystem::remove(path);
    EXPECT_EQ(Start(), 0);  // the file is gone: ready, with empty tables
    EXPECT_EQ(Enabled(), withHistory);
    EXPECT_EQ(model.nodeCount, 0);
    EXPECT_EQ(OpenDataFile(path), 0);
    EXPECT_EQ(Enabled(), untitled);
    EXPECT_EQ(model.dataFileName, "");
    EXPECT_THAT(TakeMessages(), ElementsAre(1020, 1020));
    ASSERT_EQ(OpenDataFile(Transient()), 1);
    EXPECT_EQ(runState.startStep, 1);
    NewDocument();
    EXPECT_EQ(Enabled(), untitled);
}

TEST_F(RunStates, EnableTheseCommands) {
    ASSERT_EQ(OpenChosenFile(Transient()), 1);
    const Ids ready{commandNew,  commandOpenDataFile, commandOpenInitialConditions,
                    commandExit, commandStartTime,    commandStart};
    EXPECT_EQ(Enabled(), ready);
    EXPECT_TRUE(MayEndSession());

    StartAndHold();
    const Ids running{commandStop, commandHaltIteration, commandGraph};
    EXPECT_EQ(Enabled(), running);
    EXPECT_FALSE(MayEndSession());
    recorder.haltEnabled = true;
    HaltIteration();
    EXPECT_FALSE(recorder.haltEnabled);
    const Ids halted{commandStop, commandGraph};
    EXPECT_EQ(Enabled(), halted);
    Stop();
    EXPECT_EQ(Enabled(), halted);  // stopping
    EXPECT_FALSE(MayEndSession());
    const std::vector<MessageBox> boxes = TakeBoxes();
    ASSERT_EQ(boxes.size(), 2U);
    EXPECT_EQ(boxes[0].caption, "KALDRA SOLVE - ");
    EXPECT_EQ(boxes[0].text, "Computation in progress.\nPress STOP before closing Windows.");

    Release();
    HandleCalcThreadMsg(99, 0);    // no message of the calculation thread
    EXPECT_EQ(Enabled(), halted);  // until the thread has been waited for
    EXPECT_EQ(WaitForEnd(), 0);
    EXPECT_FALSE(HasFile("case.t01"));
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
    EXPECT_FALSE(ShownDrawing().drawn);
    EXPECT_EQ(model.nodeCount, 7);
    EXPECT_FALSE(IsCommandEnabled(commandGraph));
    CloseGraph();
    EXPECT_EQ(model.nodeCount, 7);
    EXPECT_TRUE(IsCommandEnabled(commandGraph));
    Release();
    (void)WaitForEnd();
}

// The curve is drawn while the calculation thread waits, one point longer each time.
TEST_F(RunStates, TheLiveCurveGrows) {
    ASSERT_EQ(OpenDataFile(WriteFile("case.kdr", Column(1, 3).Text())), 1);
    std::vector<std::size_t> points;
    recorder.onGraphData = [this, &points] {
        EXPECT_TRUE(recorder.haltEnabled);
        DrawGraphData();
        points.push_back(ShownDrawing().y.size());
    };
    StartAndHold();
    OpenGraph();
    Release();
    EXPECT_THAT(points, ElementsAre(1, 2));
    EXPECT_EQ(WaitForEnd(), 1);
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
    EXPECT_EQ(WaitForEnd(), 1);
    EXPECT_EQ(other.Take(Path("case.kdr")), FileLock::Result::Held);
}

}  // namespace
}  // namespace kaldra
