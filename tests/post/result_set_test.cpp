// What is read back beside a data file, and what is not taken for a result.

#include "post/result_set.h"

#include <filesystem>

#include "support/kaldra_test.h"

namespace kaldra {
namespace {

class ResultSets : public KaldraTest {
protected:
    // Conductivity 2 and a temperature that rises by 5 per unit of height.
    static Problem FourSteps() {
        Problem column = TransientColumn({"1 50 1.23456 1", "2 50 100 0", "3 50 150 1", "4 900 1000 1"});
        column.materials = {"1 1 1 3 4 0.5", "2 0 0 0 0 0"};
        column.flux = {"1 1\n1 -1 0.5 2 0.5"};
        column.Element("6 5 3 4 0 0 0 0", 4, "1", 2);  // NULL, between points of nothing
        return column;
    }
    Rows Steps() {
        ResultSet set;
        if (!OpenResultSet(Path("case.kdr"), set)) return {"failed"};
        Rows steps;
        for (const SavedStep& step : set.steps) steps.push_back(testing::PrintToString(step.step));
        return steps;
    }
};

TEST_F(ResultSets, ValuesAreThoseOfTheFiles) {
    ASSERT_EQ(Run(FourSteps()).result, 1);
    ResultSet set;
    ASSERT_EQ(OpenResultSet(Path("case.kdr"), set), 1);
    ASSERT_EQ(set.steps.size(), 3);
    EXPECT_EQ(set.steps[0].elapsed, 1.23456F);  // although a file holds five digits
    EXPECT_EQ(set.steps[2].step, 4);
    StepResults results;
    ASSERT_EQ(ReadStepResults(4, results), 1);
    EXPECT_EQ(results.elapsed, 1000);
    for (std::size_t n = 0; n < 6; ++n) {
        EXPECT_NEAR(results.nodes[n].temperature, 5 * model.nodes[n].y - 1, 1e-4) << n;
        EXPECT_NEAR(results.nodes[n].flow, n < 2 ? -5 : n < 4 ? 0 : 5, 1e-3) << n;
    }
    EXPECT_EQ(results.nodes[6].temperature, -2.5F);
    for (std::size_t e = 0; e < 4; ++e) {
        const PointResult& point = results.points[PointsBegin(e)];
        EXPECT_NEAR(point.fluxX, 0, 1e-3);
        EXPECT_NEAR(point.fluxY, -10, 1e-3);
        EXPECT_NEAR(point.gradientY, -5, 1e-3);
        EXPECT_EQ(point.conductivity, 2);
        EXPECT_NEAR(point.unfrozenWater, 0.5 * (100 + point.temperature) / 200, 1e-6);
        EXPECT_EQ(point.heatCapacity, point.temperature > 0 ? 4 : 3) << e;
    }
    EXPECT_EQ(PointsBegin(4), 4);
    EXPECT_EQ(results.points.back().conductivity, 0);
    ASSERT_EQ(results.sections.size(), 1);
    EXPECT_NEAR(results.sections[0].heatFlux, 10, 1e-3);
    ASSERT_EQ(results.crossings.size(), 2);
    EXPECT_EQ(results.crossings[1].element, 2);
}

TEST_F(ResultSets, AFileThatIsNotWholeIsNoResult) {
    ASSERT_EQ(Run(FourSteps()).result, 1);
    EXPECT_THAT(Steps(), ElementsAre("1", "3", "4"));
    const std::string bytes = ReadFile("case.g03");
    WriteFile("case.g03", bytes.substr(0, bytes.size() - 2));
    EXPECT_THAT(Steps(), ElementsAre("1", "4"));
    StepResults results;
    EXPECT_EQ(ReadStepResults(3, results), 0);
    EXPECT_THAT(TakeText(5002), testing::EndsWith("case.g03"));
    WriteFile("case.g03", bytes);
    std::string text = ReadFile("case.j04");
    text.replace(text.find("Section     1"), 13, "Section     7");
    WriteFile("case.j04", text);
    EXPECT_THAT(Steps(), ElementsAre("1", "3"));
}

TEST_F(ResultSets, ASteadyStateThatMayBeOfTwoRunsIsNoResult) {
    ASSERT_EQ(Run(Column()).result, 1);
    EXPECT_THAT(Steps(), ElementsAre("0"));
    WriteFile("case.lkp", "");
    EXPECT_THAT(Steps(), ElementsAre());
    std::filesystem::remove(Path("case.lkp"));
    const auto time = std::filesystem::last_write_time(Path("case.r00"));
    std::filesystem::last_write_time(Path("case.kdr"), time + std::chrono::seconds(1));
    ResultSet set;
    ASSERT_EQ(OpenResultSet(Path("case.kdr"), set), 1);
    EXPECT_THAT(set.remark, testing::HasSubstr("was changed after the results of step 0"));
    std::filesystem::remove(Path("case.kdr"));
    EXPECT_THAT(Steps(), ElementsAre("failed"));
    EXPECT_THAT(TakeMessages(), ElementsAre(1020));
}

}  // namespace
}  // namespace kaldra
