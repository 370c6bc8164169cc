#include "frontend/panel.h"

#include "frontend/commands.h"
#include "frontend/help_topics.h"
#include "frontend/start_dialogs.h"
#include "frontend/system_information.h"
#include "restart/start_step.h"
#include "run/run_state.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

class Panel : public KaldraTest {
protected:
    static std::vector<std::string> Labels() {
        std::vector<std::string> texts;
        for (const PanelLabel& label : PanelLabels()) texts.push_back(label.left + '|' + label.right);
        return texts;
    }

    // A transient problem whose second time needs more digits than the list shows.
    std::string Transient() const {
        return WriteFile("case.kdr", TransientColumn({"1 0.5 0.5 1", "2 12 12.5 1", "3 1 13.5 1"}).Text());
    }
};

TEST_F(Panel, LabelsFollowTheDocument) {
    EXPECT_EQ(MainWindowTitle(), "KALDRA SOLVE - (untitled)");
    EXPECT_THAT(Labels(), ElementsAre("|", "|", "|", "|"));
    ASSERT_EQ(OpenChosenFile(Transient()), 1);
    EXPECT_EQ(MainWindowTitle(), "KALDRA SOLVE - case.kdr");
    EXPECT_THAT(Labels(), ElementsAre("Data File:|case.kdr", "Initial Temp File:|(none)", "|", "Start Time Step:|1"));
    WriteFile("case.t02", "");
    WriteFile("case.r02", "");
    ChooseStartTime(3);
    EXPECT_THAT(Labels(), ElementsAre("Data File:|case.kdr", "Initial Temp File:|case.t02", "Initial K From:|case.r02",
                                      "Start Time Step:|3"));
    ASSERT_EQ(OpenChosenFile(WriteFile("steady.kdr", Column(1, 3).Text())), 1);
    EXPECT_EQ(Labels()[3], "Start Time Step:|0  (Steady-State)");
    EXPECT_EQ(OpenChosenFile(WriteFile("bad.kdr", "nonsense")), 0);
    EXPECT_THAT(TakeMessages(), ElementsAre(1054));
    EXPECT_THAT(Labels(), ElementsAre("|", "|", "|", "|"));
}

TEST_F(Panel, TheCommandLineNamesAFileWithOrWithoutQuotes) {
    const std::string path = WriteFile("with \"quotes\" and blanks.kdr", Column(1, 3).Text());
    for (const std::string& name : {path, '"' + path + '"'}) {
        NewDocument();
        EXPECT_EQ(OpenNamedFile(name), 1);
        EXPECT_EQ(MainWindowTitle(), "KALDRA SOLVE - with \"quotes\" and blanks.kdr");
    }
    NewDocument();
    EXPECT_EQ(OpenNamedFile(Path("missing.kdr")), 0);
    EXPECT_EQ(MainWindowTitle(), "KALDRA SOLVE - (untitled)");
    EXPECT_EQ(OpenChosenFile(Path(std::string(300, 'x') + ".kdr")), 0);
    EXPECT_THAT(TakeMessages(), ElementsAre(1074));
}

TEST_F(Panel, StartTimesShowWhichResultsExist) {
    ASSERT_EQ(OpenDataFile(Transient()), 1);
    WriteFile("case.t02", "");
    (void)FreeModel();  // as after a run
    runState.startStep = 2;
    const StartTimeList list = ListStartTimes();
    EXPECT_THAT(list.rows, ElementsAre(" 1          5.0000E-001          5.0000E-001      No",
                                       " 2          1.2000E+001          1.2500E+001      Yes",
                                       " 3          1.0000E+000          1.3500E+001      No"));
    EXPECT_EQ(list.selected, 1);
}

TEST_F(Panel, InitialFilesChangeNothingBeforeOk) {
    ASSERT_EQ(OpenDataFile(Transient()), 1);
    WriteFile("case.tin", "");
    WriteFile("case.rin", "");
    WriteFile("other.t07", "");
    WriteFile("other.r07", "");
    InitialFiles files;
    ASSERT_EQ(BeginInitialFiles(files), 1);
    ASSERT_EQ(PickInitialFile(files, Path("case.tin")), 1);
    EXPECT_EQ(FileLabel(files.conductivities), "case.rin");
    EXPECT_EQ(PickInitialFile(files, Path("case.kdr")), 0);
    EXPECT_THAT(TakeMessages(), ElementsAre(4030));
    EXPECT_EQ(FileLabel(files.temperatures), "case.tin");
    ASSERT_EQ(PickInitialFile(files, Path("other.t07")), 1);
    EXPECT_EQ(FileLabel(files.conductivities), "(none)");  // those of another problem are not taken
    EXPECT_EQ(runState.initialTemperatureFile, "");
    AcceptInitialFiles(files);
    EXPECT_EQ(runState.initialTemperatureFile, Path("other.t07"));
    EXPECT_EQ(runState.initialConditionMode, 1);
    EXPECT_EQ(Labels()[1] + Labels()[2], "Initial Temp File:|other.t07|");  // blank without conductivities
    ClearInitialFiles(files);
    AcceptInitialFiles(files);
    EXPECT_EQ(runState.initialConditionMode, 0);
}

TEST(PanelPlaces, ADialogStaysOnTheScreen) {
    const DialogRect screen{0, 0, 1000, 800};
    const DialogRect dialog{0, 0, 100, 50};
    const auto at = [&](const DialogRect& client) {
        const ScreenPoint point = CentreOnMain(client, dialog, screen);
        return std::pair(point.x, point.y);
    };
    EXPECT_EQ(at({200, 100, 300, 150}), std::pair(300, 150));
    EXPECT_EQ(at({950, 790, 300, 150}), std::pair(900, 750));
    EXPECT_EQ(at({-200, -100, 300, 150}), std::pair(0, 0));
}

TEST(PanelPlaces, FiltersComeInPairs) {
    const std::vector<FileFilter> filters = FileFilters(1281);
    ASSERT_EQ(filters.size(), 2U);
    EXPECT_EQ(filters[0].name + ' ' + filters[0].pattern, "Printer Files (*.prn) *.prn");
    EXPECT_EQ(filters[1].name + ' ' + filters[1].pattern, "All Files (*.*) *");
    EXPECT_TRUE(FileFilters(1).empty());
}

TEST(Help, EveryMenuItemAndDialogHasAPage) {
    EXPECT_EQ(HelpTopicForMenu(12345), 40000);
    EXPECT_EQ(HelpTopicForDialog(102), 22102);
    EXPECT_EQ(HelpTopicForDialog(103), 40000);
    EXPECT_EQ(HelpTopicForRequest(true, commandNew), helpContents);
    for (const std::span<const MenuItem> menu : {MainMenu(), GraphMenu()}) {
        for (const MenuItem& item : menu) {
            const bool general = item.id == commandUpdate;
            EXPECT_EQ(HelpTopicForMenu(item.id) == 40000, general) << item.text;
            EXPECT_NE(HelpPageFile(HelpTopicForMenu(item.id)), HelpPageFile(helpContents)) << item.text;
        }
    }
}

TEST(SystemInformation, SaysWhatIsNotAvailable) {
    SystemFigures figures;
    EXPECT_EQ(UserLine(figures), "");
    figures.computerName = "box";
    EXPECT_EQ(UserLine(figures), "box");
    figures.userName = "me";
    EXPECT_EQ(UserLine(figures), "me on box");
    figures.processorName = "fast";
    figures.memoryKB = 5'000'000'000;
    figures.volumes = {{"/", true, {}, {}}, {"/data", false, 20, 10}};
    EXPECT_THAT(SystemLines(figures),
                ElementsAre(" System Version:\tunavailable", " Number of Processors:\tunavailable",
                            " Processor Level:\tfast (or compatible)", " Physical Memory:\t5000000000 KB",
                            " Free Physical Memory:\tunavailable", " Total Paging File Size:\tunavailable",
                            " Free Paging File:\tunavailable"));
    EXPECT_THAT(VolumeLines(figures), ElementsAre(" /*\tunavailable", " /data\t20 KB (10 KB free)"));

    const SystemFigures here = GatherSystemFigures();
    EXPECT_TRUE(here.memoryKB > 0 && here.processorCount > 0);
    ASSERT_FALSE(here.volumes.empty());
    EXPECT_TRUE(here.volumes[0].current);
}

}  // namespace
}  // namespace kaldra
