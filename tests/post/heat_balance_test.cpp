// Heat that came in against heat that is there, in runs whose heat is known.

#include "post/heat_balance.h"

#include <cmath>

#include "platform/number_text.h"
#include "run/warnings.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

HeatBalance found;

class HeatBalances : public KaldraTest {
protected:
    HeatBalances() {
        found = {};
        frontEnd.StepDone = [] { EXPECT_EQ(AddStepBalance(found), 1); };
    }
    // A unit square of 9 points with all side nodes on top of two triangles and a quadrilateral.
    static Problem Ground() {
        Problem ground;
        ground.analysis = "2 1 0 1 0";
        ground.materials = {"1 1 1 3 5 0.5"};
        ground.S = {FunctionRows(1, {"-100 0", "100 0"})};
        ground.converge = "200 0.00001 0";
        static constexpr double places[][2]{{0, 3}, {1, 3}, {0, 2},   {1, 2},   {0, 1},   {1, 1},
                                            {0, 0}, {1, 0}, {0.5, 3}, {0, 2.5}, {0.5, 2}, {1, 2.5}};
        for (const auto& [x, y] : places) {
            ground.Node(x, y, "0 0 0 0 1 2");
        }
        ground.Element("2 1 3 4 9 10 11 12", 9, "2");
        ground.Element("3 5 4 0 0 0 11 0", 3, "2");
        ground.Element("5 6 4 0 0 0 0 0", 1, "2");
        ground.Element("6 5 7 8 0 0 0 0", 4, "2");
        return ground;
    }
    static void SetNode(Problem& problem, std::size_t number, const std::string& boundary) {
        std::string& row = problem.nodes[number - 1];
        row = row.substr(0, row.find(" 0 0 0 0 1 2")) + ' ' + boundary;
    }
};

// All kinds of boundary, and a freezing point that the ground passes: capacities differ, but nothing else.
TEST_F(HeatBalances, ALinearProblemCloses) {
    Problem ground = Ground();
    ground.materials = {"1 1 1 3 3 0.5"};
    ground.B = {FunctionRows(1, {"0 2", "2 -6", "4 5"}, "0 0 0 0 0"), FunctionRows(2, {"0 0", "4 8"}, "0 0 0 0 0")};
    for (const std::size_t n : {1U, 2U, 9U}) SetNode(ground, n, "0 1 1 0 1 2");  // by a function
    SetNode(ground, 5, "-1.5 2 0 0 1 2");                                        // a constant flow,
    SetNode(ground, 6, "0 2 2 0 1 2");                                           // and one by a function
    for (const std::size_t n : {7U, 8U}) SetNode(ground, n, "0 3 0 0 1 2");
    ground.edges = {"7 8 4 0 3 0 0"};
    for (int step = 1; step <= 16; ++step) ground.times.push_back(FormatText("%d 0.25 %.2f 0", step, step * 0.25));
    ASSERT_EQ(Run(ground).result, 1);
    ASSERT_EQ(found.steps.size(), 16);
    for (const StepBalance& step : found.steps) {
        EXPECT_LT(std::abs(step.Miss()), 1e-5) << step.step << ": " << step.Residual() << " of " << step.turnedOver;
        EXPECT_NEAR(step.unitFluxes, 3 * 2 * 0.25, 1e-6);  // on an edge of length 1, of ground 2 deep
        EXPECT_NEAR(step.nodalFlows, 0.25 * (-1.5 + 0.5 * step.step), 1e-6);
        EXPECT_NEAR(step.byFunctions, step.atTemperatures + 0.25 * 0.5 * step.step, 1e-6);
        EXPECT_EQ(step.latent, 0);
        EXPECT_GT(step.turnedOver, 1);
    }
    const StepBalance sum = SumOf(found);
    EXPECT_LT(std::abs(sum.Miss()), 1e-5);
    EXPECT_NEAR(sum.unitFluxes, 24, 1e-5);
    WarnOfBalance(found);
    EXPECT_EQ(TakeWarnings(), Rows{});
}

// Ground that is warmed evenly from -2 to 2 by its walls holds what its material says: 6 cubic units of ground, 3 and 5
// for the dry heat, and the water that thaws.
TEST_F(HeatBalances, StoredHeatIsThatOfTheMaterial) {
    Problem ground = Ground();
    ground.analysis = "2 1 70 1 0";
    ground.S = {FunctionRows(1, {"-9 0.1", "9 1"})};  // 0.45 unfrozen at -2
    for (std::size_t n = 1; n <= ground.nodes.size(); ++n) SetNode(ground, n, "2 1 0 0 1 -2");
    ground.times = {"1 1 1 0"};
    ground.converge = "50 0.01 99";
    ASSERT_EQ(Run(ground).result, 1);
    ASSERT_EQ(found.steps.size(), 1);
    const StepBalance& step = found.steps[0];
    EXPECT_NEAR(step.sensible, 6 * (3 * 2 + 5 * 2), 1e-4);
    EXPECT_NEAR(step.latent, 6 * 70 * 0.5 * (0.65 - 0.45), 1e-3);
}

// A front that crosses the points of large elements in large steps meets latent heat that is not there.
TEST_F(HeatBalances, LatentHeatThatIsCountedTwiceIsWarnedOf) {
    Problem ground = Ground();
    ground.analysis = "2 1 500 1 0";
    ground.S = {FunctionRows(1, {"-5 0.1", "-0.2 0.2", "0 1", "9 1"}, "0 4")};
    ground.converge = "60 0.1 2";
    for (const std::size_t n : {1U, 2U, 9U}) SetNode(ground, n, "-10 1 0 0 1 2");
    for (int step = 1; step <= 12; ++step) ground.times.push_back(FormatText("%d 5 %d 0", step, step * 5));
    const Outcome run = Run(ground);
    ASSERT_EQ(run.result, 1);
    const StepBalance sum = SumOf(found);
    ASSERT_GT(std::abs(sum.Miss()), 0.05);
    EXPECT_GT(std::abs(sum.latentCounted), std::abs(sum.latent));
    (void)TakeWarnings();
    model = run.model;
    WarnOfBalance(found);
    EXPECT_THAT(TakeWarnings(), ElementsAre(testing::ContainsRegex("the heat balance misses by .* in steps .*counted "
                                                                   "more than once.*phase points, now 2")));
}

TEST_F(HeatBalances, StepsAreNamedAsRanges) {
    const std::vector<std::pair<std::vector<std::int32_t>, std::string>> cases{
        {{}, ""},
        {{4}, "4"},
        {{1, 2, 3, 5, 7, 8}, "1-3, 5, 7-8"},
        {{1, 3, 5, 7, 9, 11, 13, 15, 16, 20, 21, 22}, "1, 3, 5, 7, 9, 11, 13, 15-16 and 3 more"},
    };
    for (const auto& [numbers, text] : cases) EXPECT_EQ(NumberRanges(numbers), text);
}

}  // namespace
}  // namespace kaldra
