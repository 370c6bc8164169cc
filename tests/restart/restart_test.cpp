// Initial condition files: which are taken, what is read from them, and what a wrong one says.

#include <filesystem>

#include "frontend/commands.h"
#include "restart/initial_conditions.h"
#include "restart/start_step.h"
#include "restart/step_files.h"
#include "run/run_state.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

class Restart : public KaldraTest {
protected:
    static Problem FourSteps() { return TransientColumn({"1 1 1", "2 1 2", "3 1 3", "4 1 4"}); }
    static std::string Result(const std::string& time, const std::string& rows) {
        return "a\r\nb\r\nc\r\nd\r\n" + time + "\r\n   \r\ncolumns\r\n==============\r\n" + rows;
    }
};

struct FileCheck {
    const char* name;
    int startStep, message;  // 0: the file is taken
};

TEST_F(Restart, FilesAreCheckedByNameStepAndTime) {
    ASSERT_TRUE(Prepare(FourSteps()));
    for (const char* name : {"case.t02", "case.t03", "CASE.T03"}) WriteFile(name, Result("2   +2.0000E+000  =", ""));
    const std::vector<FileCheck> checks{
        {"case.t3", 4, 4030},   {"case.t", 4, 4030},
        {"case.tx1", 4, 4030},  {"case.r03", 4, 4030},
        {"case.t0a", 4, 4030},  {"case.tin2", 1, 4030},
        {"nodot", 1, 4030},     {"case.t02", 3, 0},
        {"case.T02", 3, 0},     {"case.t02", 4, 4031},
        {"case.t01", 1, 4031},  {"case.t00", 1, 0},
        {"case.tin", 1, 0},     {"case.TIN", 1, 0},
        {"case.tin", 2, 4031},  {"case.t03", 4, 4032},
        {"CASE.T03", 4, 4032},  {"case.t01", 2, 0},
        {"other.t07", 3, 0},    {"other.t03", 1, 0},
        {"other.x03", 1, 4030}, {"case.t99999999999", 4, 4031},
    };
    for (const auto& [name, startStep, message] : checks) {
        runState.startStep = startStep;
        EXPECT_EQ(ValidateInitialFile(Path(name), 't'), message == 0) << name << ' ' << startStep;
        EXPECT_EQ(TakeMessages(), message == 0 ? std::vector<int>{} : std::vector<int>{message}) << name;
    }
}

TEST_F(Restart, DefaultFilesAreThoseOfTheStepBefore) {
    ASSERT_TRUE(Prepare(FourSteps()));
    const auto mode = [](int step, int found) {
        EXPECT_EQ(SetStartStep(step), found);
        EXPECT_EQ(runState.currentStep, step - 1);
        return runState.initialConditionMode;
    };
    EXPECT_EQ(mode(1, 1), 0);
    EXPECT_EQ(mode(3, 0), 0);
    WriteFile("case.t02", "");
    EXPECT_EQ(mode(3, 0), 1);
    WriteFile("case.r02", "");
    EXPECT_EQ(mode(3, 1), 2);
    EXPECT_EQ(runState.initialConductivityFile, Path("case.r02"));
    EXPECT_EQ(mode(1, 1), 0);
    EXPECT_TRUE(runState.initialTemperatureFile.empty());
    ChooseStartTime(4);
    EXPECT_EQ(TakeMessages(), std::vector<int>{4005});
    EXPECT_EQ(ChooseInitialConditions(Path("none.t02")), 0);
    EXPECT_EQ(TakeMessages(), std::vector<int>{1075});
}

TEST_F(Restart, ResultsOnDiskAreHeldAgainstTheTimeSequence) {
    ASSERT_TRUE(Prepare(FourSteps()));
    EXPECT_EQ(LastConsistentStep('t'), 4);  // nothing on disk contradicts
    WriteFile("case.t01", Result("1   +1.0000E+000  =", ""));
    WriteFile("case.t03", Result("3   +3.0001E+000  =", ""));
    EXPECT_EQ(LastConsistentStep('t'), 2);
    WriteFile("case.t02", "a\nb\nc\nd\n");  // the fifth line is missing
    EXPECT_EQ(LastConsistentStep('t'), 1);
    WriteFile("case.t01", Result("no number", ""));
    EXPECT_EQ(LastConsistentStep('t'), 0);
}

TEST_F(Restart, AnotherTimeSequenceIsRefused) {
    const std::string path = WriteFile("case.kdr", FourSteps().Text());
    ASSERT_EQ(OpenDataFile(path), 1);
    WriteFile("case.t02", Result("2   +2.5000E+000  =", ""));
    const std::string start =
        "The time sequence has been changed in DEFINE.  You should re-analyze your problem. \n"
        "Choose Set Start Time to start from time step 1";
    runState.startStep = 3;
    EXPECT_FALSE(RunOpened().started);
    EXPECT_EQ(TakeText(1301), start + " or re-start at time step 2 . ");
    WriteFile("case.t01", Result("1   +1.5000E+000  =", ""));
    EXPECT_FALSE(RunOpened().started);
    EXPECT_EQ(recorder.boxes.at(0).caption, "KALDRA SOLVE");
    EXPECT_EQ(TakeText(1301), start + " . ");
}

const std::string sevenRows = "1 1.5 0.5 9\r\n2 2.5\r\n3 3 3\r\n4 4 4\r\n5 5 5\r\n6 6 6\r\n7 7 7\r\n";
const std::string fourPoints = "1 1 9 2.5\r\n 2 1 9 3.5\r\n 3 1 9 4.5\r\n 4 1 9 5.5\r\n";

TEST_F(Restart, TemperaturesAndConductivitiesAreReadAndWrittenBack) {
    ASSERT_TRUE(Prepare(FourSteps()));
    WriteFile("case.t02", Result("2   +2.0000E+000  =", sevenRows + "\r\n"));
    WriteFile("case.r02", Result("2   +2.0000E+000  =", fourPoints));
    ASSERT_EQ(SetStartStep(3), 1);
    ASSERT_EQ(ReadInitialConditions(), 1);
    EXPECT_EQ(model.nodeStates[1].temperature, 2.5F);
    EXPECT_EQ(model.nodeStates[1].previous, 2.5F);
    EXPECT_EQ(model.SolutionVector[1], 0.0F);
    EXPECT_EQ(model.SolutionVector[0], 0.5F);
    EXPECT_EQ(PointResultsOf(3).conductivity[0], 5.5F);
    EXPECT_THAT(ReadFile("case.t02"), testing::HasSubstr("2   +2.0000E+000  = Step Number, Elapsed time\r\n"));
    EXPECT_THAT(ReadFile("case.t02"), testing::HasSubstr("\r\n    1 +1.500000E+000 +5.000000E-001\r\n"));
}

struct BadFile {
    const char* what;
    std::string temperatures, conductivities;
    int message;
};

TEST_F(Restart, WrongFilesAreNamed) {
    const std::string header = "2   +2.0000E+000  =";
    const std::vector<BadFile> files{
        {"too few nodes", Result(header, "1 1\r\n2 2\r\n"), "", 1137},
        {"too many nodes", Result(header, sevenRows + "8 8 8\r\n"), "", 1137},
        {"a node outside", Result(header, "0 1\r\n" + sevenRows), "", 1137},
        {"one field", Result(header, "1\r\n" + sevenRows), "", 1152},
        {"no number", Result(header, "1 x\r\n" + sevenRows), "", 1152},
        {"no rule", "1 1\r\n2 2\r\n", "", 1152},
        {"wrong element", Result(header, sevenRows), Result(header, "1 1 9 2\r\n3 1 9 2\r\n"), 1137},
        {"too few points", Result(header, sevenRows), Result(header, "1 1 9 2\r\n"), 1137},
        {"too many points", Result(header, sevenRows), Result(header, fourPoints + "5 1 9 2\r\n"), 1137},
        {"two fields", Result(header, sevenRows), Result(header, "1 1 9\r\n"), 1151},
        {"no rule in the second", Result(header, sevenRows), "1 1 9 2\r\n", 1151},
    };
    for (const BadFile& file : files) {
        ASSERT_TRUE(Prepare(FourSteps()));
        WriteFile("case.t02", file.temperatures);
        WriteFile("case.r02", file.conductivities);
        ASSERT_EQ(SetStartStep(3), 1);
        EXPECT_EQ(ReadInitialConditions(), 0) << file.what;
        EXPECT_EQ(TakeMessages(), std::vector<int>{file.message}) << file.what;
    }
    std::filesystem::remove(Path("case.t02"));
    EXPECT_EQ(ReadInitialConditions(), 0);
    EXPECT_EQ(TakeMessages(), std::vector<int>{1075});
}

}  // namespace
}  // namespace kaldra
