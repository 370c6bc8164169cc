// What a run says beside its messages, and whether its files can be believed.

#include "run/warnings.h"

#include <filesystem>

#include "frontend/commands.h"
#include "platform/number_text.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

class Warnings : public KaldraTest {
protected:
    // The column of squares over four steps; its upper end follows boundary function 1 of these header and points.
    static Problem Driven(const std::string& function, const Rows& times = {"1 1 1", "2 1 2", "3 1 3", "4 1 4"}) {
        Problem column = TransientColumn(times);
        column.B = {function};
        column.nodes[4] = "5 0 2 0 1 1 0 0 0";
        return column;
    }
    // The warnings since the last call without the folder.
    Rows Take() const {
        Rows texts = TakeWarnings();
        for (std::string& text : texts) {
            for (std::size_t at = 0; (at = text.find(folder + '/')) != std::string::npos;)
                text.erase(at, folder.size() + 1);
        }
        return texts;
    }
};

struct Range {
    const char* function;
    const char* points;
    const char* read;  // empty: no warning
};

TEST_F(Warnings, BoundaryFunctionsAreReadWithinTheirPoints) {
    const std::vector<Range> ranges{
        {"1 2 0 0 0 0\nf\n1 9\n4 9", "", ""},
        {"1 2 0 0 0 0\nf\n0 9\n2 9", "0 to 2", "in 2 steps from step 3 on, at times from 3 to 4"},
        {"1 2 0 0 0 0\nf\n1.5 9\n4 9", "1.5 to 4", "at time 1 in step 1"},
        {"1 2 0 0 0 0 1\nf\n0 9\n2 9", "", ""},
        {"1 2 0 0 0 0 1\nf\n0.5 9\n2 9", "0.5 to 2", "in 2 steps from step 2 on, at times from 0 to 0"},
    };
    for (const auto& [function, points, read] : ranges) {
        ASSERT_EQ(Run(Driven(function)).result, 1);
        const Rows expected{
            FormatText("case.kdr:31: boundary function 1 has points from %s and is read outside them, "
                       "where it keeps its end value, %s: add points, or let it repeat",
                       points, read)};
        EXPECT_EQ(Take(), *read == '\0' ? Rows{} : expected);
    }
    Problem unused = Driven(ranges[1].function);
    unused.nodes[4] = "5 0 2 9 1 0 0 0 0";
    ASSERT_EQ(Run(unused).result, 1);
    EXPECT_EQ(Take(), Rows{});
}

TEST_F(Warnings, CutLinesAreToldOnce) {
    const std::string tail = " " + std::string(94, ' ') + "x";
    Problem problem = Column();
    problem.title[0] += tail;                  // no number is read of it
    problem.nodes[0] += std::string(94, ' ');  // nothing is lost
    ASSERT_EQ(Run(problem).result, 1);
    EXPECT_EQ(Take(), Rows{});
    problem.nodes[2] += tail;
    problem.nodes[5] += tail;
    ASSERT_EQ(Run(problem).result, 1);
    EXPECT_EQ(Take(), Rows{"case.kdr:26: the line is longer than 94 characters, and what stands behind them is not "
                           "read: shorten it, and 1 more behind it"});
}

TEST_F(Warnings, ARestartTellsOfTimesThatAreNotKept) {
    ASSERT_EQ(Run(Driven("1 2 0 0 0 0\nf\n0 9\n2000 9", {"1 1234.56 1234.56", "2 1 1235.56"})).result, 1);
    EXPECT_EQ(Take(), Rows{});
    ChooseStartTime(2);
    EXPECT_FALSE(RunOpened().started);
    EXPECT_THAT(TakeMessages(), ElementsAre(1301));
    const Rows told = Take();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_THAT(told[0],
                testing::StartsWith("case.kdr:13: the elapsed time 1234.56 of step 1 needs more than the five"));
}

TEST_F(Warnings, OldFilesAndTheMarkerMayResist) {
    for (const char* name : {"case.g03", "case.t05", "case.tin", "case.lkp"}) {
        std::filesystem::create_directory(Path(name));  // which no deletion of a file takes away
    }
    ASSERT_EQ(Run(Column()).result, 1);
    EXPECT_EQ(Take(), (Rows{"case.tin could not be deleted and is no result of this run: delete it, and 2 more like it",
                            "case.lkp could not be made, so other programs do not see that a run is under way",
                            "case.lkp could not be deleted and tells other programs of a run: delete it"}));
    EXPECT_TRUE(ResultsAreWhole());
}

}  // namespace
}  // namespace kaldra
