// Where lines meet edges, and which side of a section a node lies on.

#include "results/flux_geometry.h"

#include "support/kaldra_test.h"

namespace kaldra {
namespace {

struct Meeting {
    const char* what;
    FluxLine a, b;
    int result;
    float x, y;
};

TEST(SegmentIntersect, KnowsEveryCase) {
    const std::vector<Meeting> meetings{
        {"start on start", {0, 0, 1, 1}, {0, 0, 5, -3}, 1, 0, 0},
        {"end on start", {2, 2, 0, 0}, {0, 0, 5, 5}, 1, 0, 0},
        {"parallel, but end on end", {0, 0, 1, 0}, {3, 0, 1, 0}, 1, 1, 0},
        {"ends near each other", {0, 0, 1, 1}, {1e-11F, 1e-11F, 5, -3}, 1, 0, 0},
        {"one is a point", {1, 1, 1, 1}, {0, 1, 2, 1}, 0, 0, 0},
        {"both vertical", {1, 0, 1, 2}, {1, 1, 1, 3}, 0, 0, 0},
        {"both horizontal", {0, 1, 2, 1}, {1, 1, 3, 1}, 0, 0, 0},
        {"vertical and horizontal", {1, -1, 1, 1}, {0, 0, 2, 0}, 1, 1, 0},
        {"vertical beside", {3, -1, 3, 1}, {0, 0, 2, 0}, 0, 0, 0},
        {"vertical too short", {1, 1, 1, 2}, {0, 0, 2, 0}, 0, 0, 0},
        {"vertical touches", {1, 0, 1, 2}, {0, 0, 2, 0}, 1, 1, 0},
        {"vertical and oblique", {1, -5, 1, 5}, {0, 0, 2, 4}, 1, 1, 2},
        {"oblique and horizontal", {0, 0, 2, 4}, {5, 2, -5, 2}, 1, 1, 2},
        {"horizontal too short", {2, 2, 5, 2}, {0, 0, 2, 4}, 0, 0, 0},
        {"oblique both", {0, 0, 4, 4}, {0, 4, 4, 0}, 1, 2, 2},
        {"oblique, beyond one", {0, 0, 1, 1}, {0, 4, 4, 0}, 0, 0, 0},
        {"oblique parallel", {0, 0, 4, 4}, {1, 1, 3, 3}, 0, 0, 0},
    };
    for (const auto& [what, a, b, result, x, y] : meetings) {
        for (const auto& [m, n] : {std::pair(a, b), std::pair(b, a)}) {
            float atX = 0;
            float atY = 0;
            ASSERT_EQ(SegmentIntersect(m.x1, m.y1, m.x2, m.y2, n.x1, n.y1, n.x2, n.y2, atX, atY), result) << what;
            if (result == 0) continue;
            EXPECT_NEAR(atX, x, 1e-10) << what;
            EXPECT_NEAR(atY, y, 1e-10) << what;
        }
    }
}

// One unit square, slots 1 to 4 from the upper right corner against the clock, with a side node on its left side:
//
//     2 ----- 1
//     6       |
//     3 ----- 4
struct SectionCase {
    const char* what;
    std::vector<FluxLine> lines;
    int crossings;
    FluxLine points;   // from the first to the second point
    const char* left;  // slots
};

class FluxCrossings : public KaldraTest {
protected:
    // Gives how often a section of these lines crosses the elements.
    static int Cross(const std::vector<FluxLine>& lines) {
        model.fluxSectionCount = 1;
        model.fluxSections = {{static_cast<std::int32_t>(lines.size()), lines}};
        model.fluxResults.assign(1, {});
        EXPECT_EQ(BuildFluxCrossings(), 1);
        return model.fluxResults[0].crossingCount;
    }
    static std::string SlotsOf(const std::int32_t* nodes) {
        std::string slots;
        for (std::size_t i = 0; i < slotCount; ++i) slots += nodes[i] > 0 ? std::to_string(i + 1) : "";
        return slots;
    }
};

TEST_F(FluxCrossings, SplitOneElement) {
    Problem square;
    square.Node(1, 1);
    square.Node(0, 1);
    square.Node(0, 0);
    square.Node(1, 0);
    square.Node(0, 0.5);
    square.Element("1 2 3 4 0 5 0 0", 4);
    ASSERT_TRUE(Prepare(square));
    const std::vector<SectionCase> cases{
        {"to the right", {{-1, 0.25F, 2, 0.25F}}, 1, {0, 0.25F, 1, 0.25F}, "126"},
        {"to the left", {{2, 0.25F, -1, 0.25F}}, 1, {1, 0.25F, 0, 0.25F}, "34"},
        {"upwards", {{0.5F, -1, 0.5F, 2}}, 1, {0.5F, 0, 0.5F, 1}, "236"},
        {"ends inside", {{-1, 0.25F, 0.5F, 0.25F}}, 0, {}, ""},
        {"passes by", {{2, 0, 3, 1}}, 0, {}, ""},
        {"bends inside", {{-1, 0.25F, 0.5F, 0.25F}, {0.5F, 0.25F, 0.5F, -1}}, 1, {0, 0.25F, 0.5F, 0}, "1246"},
        {"closed, joint inside",
         {{0.5F, 0.25F, 2, 0.25F}, {2, 0.25F, 2, 3}, {2, 3, 0.5F, 0.25F}},
         1,
         {0.90909094F, 1, 1, 0.25F},
         "1"},
        {"along the lower edge", {{-1, 0, 2, 0}}, 1, {0, 0, 1, 0}, "12346"},
        {"along the upper edge", {{-1, 1, 2, 1}}, 1, {0, 1, 1, 1}, "12"},
        {"through a corner of edges 1 and 2", {{-1, 2, 1, 0}}, 1, {0, 1, 0, 1}, "12346"},
        {"on the diagonal", {{-1, -1, 2, 2}}, 1, {0, 0, 1, 1}, "1236"},
    };
    for (const SectionCase& c : cases) {
        ASSERT_EQ(Cross(c.lines), c.crossings) << c.what;
        if (c.crossings == 0) continue;
        const FluxCrossing& found = model.fluxResults[0].crossings[0];
        EXPECT_THAT((std::vector<float>{found.xa, found.ya, found.xb, found.yb}),
                    Near(1e-6F, {c.points.x1, c.points.y1, c.points.x2, c.points.y2}))
            << c.what;
        EXPECT_EQ(SlotsOf(found.leftNodes), c.left) << c.what;
        EXPECT_EQ(SlotsOf(found.leftNodes).size() + SlotsOf(found.rightNodes).size(), 5U) << c.what;
    }
}

TEST_F(FluxCrossings, AnElementWithoutItsCornersIsNotCrossed) {
    Problem problem = Column();
    problem.Element("0 2 4 3 0 0 0 0", -1);
    ASSERT_TRUE(Prepare(problem));
    EXPECT_EQ(Cross({{-1, 0.5F, 2, 0.5F}}), 2);
}

}  // namespace
}  // namespace kaldra
