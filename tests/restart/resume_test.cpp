// Which results of an interrupted run are built on.

#include "restart/resume.h"

#include <filesystem>

#include "frontend/commands.h"
#include "run/warnings.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using Steps = std::pair<int, bool>;  // the step whose results are built on, and whether nothing is left to do

class Resume : public KaldraTest {
protected:
    static Problem FiveSteps() {
        Problem column = TransientColumn({"1 1 1 1", "2 1 2 0", "3 1 3 1", "4 1 4 1", "5 1 5 0"});
        column.flux = {"1 1\n1 -1 0.5 2 0.5"};
        return column;
    }
    // Runs the problem to its end and opens it again.
    void LeaveResults(const Problem& problem) {
        ASSERT_EQ(Run(problem).result, 1);
        ASSERT_EQ(OpenDataFile(Path("case.kdr")), 1);
        (void)TakeWarnings();
    }
    // Makes a file a second newer than another one.
    void Touch(const char* name, const char* other) const {
        const auto time = std::filesystem::last_write_time(Path(other));
        std::filesystem::last_write_time(Path(name), time + std::chrono::seconds(1));
    }
    static Steps Find(int firstStep = 0) {
        const ResumePoint point = FindResumePoint(firstStep);
        return {point.lastStep, point.whole};
    }
};

TEST_F(Resume, BuildsOnTheLastSavedStepThatIsWhole) {
    LeaveResults(FiveSteps());
    EXPECT_EQ(Find(), Steps(4, true));  // step 5 leaves nothing
    std::filesystem::remove(Path("case.g04"));
    EXPECT_EQ(Find(), Steps(3, false));
    std::filesystem::remove(Path("case.t01"));
    EXPECT_EQ(Find(), Steps(3, false));
    EXPECT_EQ(Find(4), Steps(-1, false));  // what stood there before the run
    std::filesystem::rename(Path("case.r03"), Path("case.r02"));
    EXPECT_EQ(Find(), Steps(-1, false));
    EXPECT_EQ(TakeWarnings(), Rows{});
}

// Whatever a killed writer has left of a file, a shorter one included that ends behind a whole number or a whole line.
TEST_F(Resume, NoPartOfAFileIsWhole) {
    LeaveResults(FiveSteps());
    for (const char letter : {'t', 'g', 'r', 'j'}) {
        const std::string name = std::string("case.") + letter + "04";
        const std::string bytes = ReadFile(name);
        for (std::size_t length = 0; length<bytes.size(); length += bytes.size() - length> 150 ? 13 : 1) {
            WriteFile(name, bytes.substr(0, length));
            ASSERT_EQ(Find(), Steps(3, false)) << name << ' ' << length;
        }
        const std::size_t lastRow = bytes.rfind('\n', bytes.size() - 2) + 1;
        std::string blank = bytes;
        blank[lastRow + 20] = '\0';  // as a crash of the system may leave it
        for (const std::string& wrong : {bytes + bytes.substr(lastRow), bytes + '\n', blank}) {
            WriteFile(name, wrong);
            EXPECT_EQ(Find(), Steps(3, false)) << name;
        }
        WriteFile(name, bytes);
        EXPECT_EQ(Find(), Steps(4, true));
    }
}

TEST_F(Resume, ResultsHaveToFitTheDataFile) {
    LeaveResults(FiveSteps());
    Problem later = FiveSteps();
    later.times[2] = "3 1.5 3.5 1";
    ASSERT_EQ(OpenDataFile(WriteFile("case.kdr", later.Text())), 1);
    Touch("case.kdr", "case.t01");
    EXPECT_EQ(Find(), Steps(1, false));
    EXPECT_THAT(TakeWarnings(), ElementsAre(testing::HasSubstr("case.kdr was changed after the results of step 1")));
    Problem finer = FiveSteps();
    finer.times = {"1 1 1 1", "2 0.23456 1.23456 1", "3 1 2 1"};
    LeaveResults(finer);
    EXPECT_EQ(Find(), Steps(1, false));
    EXPECT_THAT(TakeWarnings(), ElementsAre(testing::HasSubstr("case.kdr:14: the elapsed time 1.23456 of step 2")));
    Problem standing = FiveSteps();
    standing.times = {"1 1 1 1", "2 0 1 1"};
    LeaveResults(standing);
    for (const char* letter : {"t", "g", "r", "j"}) {  // the same time, another step
        const std::string name = std::string("case.") + letter;
        std::filesystem::rename(Path(name + "01"), Path(name + "02"));
    }
    EXPECT_EQ(Find(), Steps(-1, false));
    LeaveResults(finer);
    Problem larger = finer;
    larger.Node(9, 9);
    ASSERT_EQ(OpenDataFile(WriteFile("case.kdr", larger.Text())), 1);
    EXPECT_EQ(Find(), Steps(-1, false));
}

TEST_F(Resume, ASteadyStateIsWholeWithItsResultSet) {
    LeaveResults(Column());
    EXPECT_EQ(Find(), Steps(0, true));
    Touch("case.kdr", "case.t00");
    EXPECT_EQ(Find(), Steps(-1, false));
    Touch("case.t00", "case.kdr");
    WriteFile("case.g00", ReadFile("case.g00") + "more\r\n");
    EXPECT_EQ(Find(), Steps(-1, false));
}

}  // namespace
}  // namespace kaldra
