// Freezing along a vertical: fields whose crossings are known by hand.

#include "post/thaw_depth.h"

#include "platform/number_text.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

class ThawDepths : public KaldraTest {
protected:
    // A crooked patch from y = 0 to 4 and x = 0 to 3: a quadrilateral whose side nodes are there in part, two
    // triangles, a NULL element, and below it ground again.
    static Problem Patch() {
        Problem patch;
        patch.materials = {"1 1 0 1 1 0", "2 0 0 0 0 0"};
        for (const auto& [x, y] : {std::pair(0, 4), {3, 4}, {0, 2}, {3, 2.5}, {0, 1.5}, {3, 1}, {0, 0}, {3, 0}}) {
            patch.Node(x, y);
        }
        patch.Node(1.5, 4);                    // 9, on the side 1-2
        patch.Node(0, 3);                      // 10, on the side 1-3
        patch.Element("2 1 3 4 9 10 0 0", 4);  // surface
        patch.Element("3 5 4 0 0 0 0 0", 1);   // slopes below it
        patch.Element("6 4 5 0 0 0 0 0", 1);
        patch.Element("6 5 7 8 0 0 0 0", 4, "1", 2);  // NULL
        return patch;
    }
    // The nodes take their temperatures from the place.
    template <class Field>
    static StepResults Results(Field field, std::int32_t step = 0, float elapsed = 0) {
        StepResults results{step, elapsed, {}, {}, {}, {}};
        for (const NodeRec& node : model.nodes) results.nodes.push_back({static_cast<float>(field(node.x, node.y)), 0});
        return results;
    }
    static std::vector<float> Depths(double x, const StepResults& results) {
        VerticalLine line;
        EXPECT_EQ(CutVertical(x, line), 1);
        std::vector<float> depths;
        for (const FreezingCrossing& crossing : CrossingsAlong(line, TemperaturesAlong(line, results))) {
            const double depth = crossing.thawedAbove ? crossing.depth : -crossing.depth;
            depths.push_back(static_cast<float>(depth));
        }
        return depths;
    }
};

TEST_F(ThawDepths, LinearFieldsAreExact) {
    ASSERT_TRUE(Prepare(Patch()));
    for (const double x : {0.0, 0.001, 0.4, 1.5, 2.2, 3.0}) {
        for (const double y0 : {3.999, 3.3, 3.0, 2.6}) {
            const auto depth = static_cast<float>(4 - y0);
            const auto warmAbove = Results([&](float, float y) { return 2 * (static_cast<double>(y) - y0); });
            EXPECT_THAT(Depths(x, warmAbove), Near(2e-6F, {depth})) << x << ' ' << y0;
            const auto sloping = Results([&](float at, float y) { return y0 - static_cast<double>(y) + (at - x) / 3; });
            EXPECT_THAT(Depths(x, sloping), Near(2e-6F, {-depth})) << x << ' ' << y0;
        }
    }
    EXPECT_THAT(Depths(1.5, Results([](float, float y) { return y - 5; })), ElementsAre());
    VerticalLine beside;
    EXPECT_EQ(CutVertical(3.01, beside), 1);
    EXPECT_TRUE(beside.samples.empty());
}

TEST_F(ThawDepths, AColumnKnowsAllItsLayers) {
    Problem column = Stack(Rows(6, "0 0 0 0 0 0"));
    column.materials = {"1 1 0 1 1 0", "2 0 0 0 0 0"};
    column.elements[1] = "2 6 5 3 4 0 0 0 0 2 4 1";  // NULL
    column.analysis = "1 1 0 1 -1";                  // freezes at -1
    ASSERT_TRUE(Prepare(column));
    struct Case {
        std::vector<double> temperatures;  // by row, from below
        std::vector<float> crossings;      // depths, negative where frozen above
        float thaw;
        bool toTheBottom;
    };
    const std::vector<Case> cases{
        {{-3, -3, -3, -3, -3, -3}, {}, 0, false},
        {{9, 9, 1, 1, 1, 1}, {}, 3, true},  // down to the NULL element
        {{-3, -3, -3, -3, -3, 1}, {0.5}, 0.5, false},
        {{-3, -3, -3, 1, 1, -3}, {-0.5, 2.5}, 2.5, false},  // frozen again from above
        {{-3, -3, 1, 1, -3, -3}, {-1.5}, 0, false},         // warm below: no thaw from above
        {{-3, -3, -3, 1, -3, 1}, {0.5, -1.5, 2.5}, 2.5, false},
        {{-3, -3, 1, -1, 1, 1}, {}, 3, true},          // a touch
        {{-1, -1, -1, -1, -1, -1}, {}, 0, false},      // all at the freezing point
        {{-3, 1, -3, -3, -3, -3}, {4.5}, 4.5, false},  // under the NULL element, and none inside it
    };
    for (const Case& c : cases) {
        const auto results = Results([&](float, float y) { return c.temperatures[static_cast<std::size_t>(y)]; });
        EXPECT_THAT(Depths(0.3, results), Near(1e-6F, c.crossings)) << testing::PrintToString(c.temperatures);
        VerticalLine line;
        ASSERT_EQ(CutVertical(0.3, line), 1);
        const ThawDepth thaw = ThawDepthAlong(line, TemperaturesAlong(line, results));
        EXPECT_NEAR(thaw.depth, c.thaw, 1e-6) << testing::PrintToString(c.temperatures);
        EXPECT_EQ(thaw.toTheBottom, c.toTheBottom) << testing::PrintToString(c.temperatures);
    }
}

// An infinite strip along -y with its near side at y = 0 and the pole at 2: y = 2 - 4 / (1 - r), T linear in u = 1 / (2
// - y).
TEST_F(ThawDepths, GroundAtInfinityIsFollowed) {
    Problem strip;
    strip.pole = "POLE 1\n0 2";
    for (const auto& [x, y] : {std::pair(0.0, -9.0), {0.0, 0.0}, {1.0, 0.0}, {1.0, -9.0}, {0.5, 0.0}}) strip.Node(x, y);
    strip.Element("1 2 3 4 0 5 0 0", 4, "1 0 -1");
    ASSERT_TRUE(Prepare(strip));
    // T = -1 at infinity and 1 on the near side: T = -r, so 0 stands at r = 0, twice the distance from the pole.
    const auto results = Results([](float, float y) { return y < -1 ? -1 : 1; });
    EXPECT_THAT(Depths(0.5, results), Near(1e-3F, {2}));
}

TEST_F(ThawDepths, PeriodsHaveTheirTrumpetsAndDeepestThaw) {
    Problem patch = Patch();
    patch.analysis = "2 1 0 1 0";
    patch.B = {FunctionRows(1, {"0 1", "12 1"}, "0 0 0 0 1"), FunctionRows(2, {"0 1", "99 1"}, "0 0 0 0 0")};
    ASSERT_TRUE(Prepare(patch));
    ThawHistory history;
    ASSERT_EQ(CutVertical(1.5, history.line), 1);
    const std::vector<std::array<float, 3>> steps{{3, 3, 3.5}, {6, 12, 3.25}, {7, 15, 3.75}, {9, 24, 9}};
    for (const auto& [step, elapsed, level] : steps) {
        const auto field = [&, at = level](float, float y) { return y - at; };
        ASSERT_EQ(AddToHistory(history, Results(field, static_cast<std::int32_t>(step), elapsed)), 1);
    }
    ASSERT_EQ(history.periods.size(), 2);
    const Trumpet& first = history.periods[0];
    EXPECT_EQ(first.period.to, 12);
    EXPECT_NEAR(first.least[0], 0.5, 1e-6);
    EXPECT_NEAR(first.greatest[0], 0.75, 1e-6);
    EXPECT_NEAR(first.sum[0] / first.weight, (3 * 0.5 + 9 * 0.75) / 12, 1e-6);
    EXPECT_NEAR(first.deepest.depth, 0.75, 1e-6);
    EXPECT_EQ(first.deepestStep, 6);
    const Trumpet& second = history.periods[1];
    EXPECT_EQ(second.period.number, 2);
    EXPECT_NEAR(second.sum[0] / second.weight, (3 * 0.25 + 9 * -5) / 12, 1e-6);
    EXPECT_EQ(second.deepestStep, 7);
    EXPECT_EQ(PeriodOf(24.0000001).number, 2);
    EXPECT_EQ(PeriodOf(24.1).number, 3);
}

}  // namespace
}  // namespace kaldra
