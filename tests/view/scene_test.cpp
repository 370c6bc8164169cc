// Cells of every element family, what the cursor meets in them, and lines through them.

#include "view/scene.h"

#include <bit>
#include <cmath>

#include "post/thaw_depth.h"
#include "view/probe.h"
#include "view/view_scene.h"

namespace kaldra {
namespace {

using Scenes = ViewTest;
using Probes = ViewTest;

double Area(const std::vector<ScenePoint>& points, const CellGrid& grid) {
    double area = 0;
    for (const auto& [a, b, c] : grid.triangles) {
        const auto x = [&](std::size_t i) { return static_cast<double>(points[i].x); };
        const auto y = [&](std::size_t i) { return static_cast<double>(points[i].y); };
        area += std::abs((x(b) - x(a)) * (y(c) - y(a)) - (x(c) - x(a)) * (y(b) - y(a))) / 2;
    }
    return area;
}

// A side node lifts its edge into a parabola: two thirds of side times lift more area.
TEST_F(Scenes, EveryFamilyCoversItsAreaAndKeepsALinearField) {
    Problem line;
    line.Node(0, 0);
    line.Node(4, 3);
    line.Element("1 2 0 0 0 0 0 0", 1);
    struct Case {
        Problem problem;
        std::int32_t sides;
        std::size_t triangles;  // at 8 pieces per side
        double area;
    };
    const Case cases[] = {
        {Quadrilateral({}), 4, 128, 8},
        {Quadrilateral({true, false, false, false}), 4, 128, 8 + 2.0 / 3 * 4 * 0.5},
        {Quadrilateral({true, true, true, true}), 4, 128, 8 + 2.0 / 3 * 4 * 0.5},
        {BentTriangle(), 3, 64, 6 + 2.0 / 3 * 4 * 0.5},
        {line, 1, 0, 0},
    };
    const LinearField field{1, 2, -3};
    for (const Case& c : cases) {
        Show(c.problem, field);
        ASSERT_EQ(scene.cells.size(), 1);
        EXPECT_EQ(scene.cells[0].sides, c.sides);
        const CellGrid& grid = GridOf(scene, scene.cells[0], 8);
        EXPECT_EQ(grid.triangles.size(), c.triangles);
        EXPECT_EQ(grid.rim.size(), static_cast<std::size_t>(8 * c.sides + 1));
        EXPECT_EQ(scene.borders.size(), static_cast<std::size_t>(c.sides));
        std::vector<ScenePoint> points;
        PlaceGrid(scene, scene.cells[0], grid, points);
        EXPECT_NEAR(Area(points, grid), c.area, 0.03);
        for (const ScenePoint& p : points) {
            EXPECT_NEAR(p.temperature, field.At(static_cast<double>(p.x), static_cast<double>(p.y)), 1e-4);
        }
        if (c.sides == 1) continue;
        for (const double x : {0.7, 1.9}) {
            const Probe probe = ProbeAt(scene, &results, x, 0.4);
            EXPECT_EQ(probe.element, 1);
            EXPECT_NEAR(probe.temperature, field.At(x, 0.4), 1e-3);
        }
    }
}

// The mesh is 1 by 1, so 0.1 of infinity is shown; the far sides are open.
TEST_F(Scenes, InfiniteElementsShowTheirNearPartWithOpenSides) {
    Show(Unbounded(), {});
    ASSERT_EQ(scene.cells.size(), 3);
    EXPECT_NEAR(scene.right, 1.1, 1e-4);
    EXPECT_NEAR(scene.top, 1.1, 1e-4);
    EXPECT_EQ(scene.cells[1].openSides, 0b1000U);
    EXPECT_EQ(scene.cells[2].openSides, 0b1001U);
    EXPECT_EQ(ProbeAt(scene, &results, 1.05, 0.3).element, 2);
    EXPECT_EQ(ProbeAt(scene, &results, 1.05, 1.05).element, 3);
    EXPECT_EQ(ProbeAt(scene, &results, 1.2, 0.3).element, 0);
    EXPECT_EQ(scene.borders.size(), 5);  // bottom, left and top of the square, bottom of the second, left of the third
    EXPECT_EQ(scene.arrows.size(), 4);   // none in infinite elements
}

TEST_F(Scenes, BordersAndBoundaryNodesAreFound) {
    Problem column = Column();
    column.materials.push_back("2 1 0 1 1 0");
    column.elements[2] = "3 3 4 6 0 0 0 0 0 2 1 1 0 0";
    column.edges = {"3 4 2 1 5 0 0"};
    Show(column, {});
    EXPECT_EQ(scene.borders.size(), 6 + 2);  // around the mesh, and around element 3 inside it
    int shared = 0;
    for (const SceneCell& cell : scene.cells) shared += std::popcount(cell.sharedSides);
    EXPECT_EQ(shared, 3);  // of 12 sides of triangles, 9 stand in different places
    std::vector<int> types;
    for (const BoundaryNode& node : scene.boundaryNodes) types.push_back(node.type);
    EXPECT_THAT(types, ElementsAre(1, 1, bcUnitFlux, bcUnitFlux, 1, 1));
}

TEST_F(Probes, TellElementNodeAndTheNearestPoint) {
    Problem problem = Quadrilateral({});
    problem.materials.push_back("2 0 0 0 0 0");
    problem.Node(8, 0);
    problem.Node(8, 2);
    problem.Element("6 1 4 5 0 0 0 0", 4, "1", 2);
    Show(problem, {1, 2, -3});
    const Probe low = ProbeAt(scene, &results, 0.4, 0.2);
    EXPECT_EQ(low.element, 1);
    EXPECT_EQ(low.node, 3);
    EXPECT_NEAR(low.temperature, 1.2, 1e-4);
    EXPECT_EQ(low.conductivity, 1.2F);  // point 3 of nine lies at r = s = -0.77
    EXPECT_EQ(low.unfrozenWater, 0.6F);
    const Probe null = ProbeAt(scene, &results, 6, 1);
    EXPECT_EQ(null.element, 2);
    EXPECT_FALSE(null.takesPart);
    EXPECT_FALSE(null.hasPoint);
    EXPECT_EQ(ProbeAt(scene, &results, 4, 3).element, 0);
    EXPECT_FALSE(ProbeAt(scene, nullptr, 0.4, 0.2).hasPoint);
    EXPECT_EQ(NearestNode(scene, 7.9, 0.1, 0.2), 5);
    EXPECT_EQ(NearestNode(scene, 7, 0.1, 0.2), 0);
}

TEST_F(Probes, WorkFarFromTheOrigin) {
    constexpr double away = 500000;
    Problem problem;
    for (const auto& [x, y] : {std::pair(0, 0), {2, 0}, {2, 1}, {0, 1}}) problem.Node(away + x, y);
    problem.Element("3 4 1 2 0 0 0 0", 4);
    Show(problem, {-away, 1, -3});
    for (int i = 1; i < 20; ++i) {
        const double x = away + 0.1 * i;
        const double y = 0.05 * i;
        EXPECT_NEAR(ProbeAt(scene, &results, x, y).temperature, 0.1 * i - 3 * y, 1e-4) << i;
        VerticalLine line;
        ASSERT_EQ(CutVertical(x, line), 1);
        ASSERT_FALSE(line.samples.empty()) << i;
        EXPECT_NEAR(TemperaturesAlong(line, results).back(), 0.1 * i, 1e-4) << i;
    }
}

// A NULL element between two others parts the line.
TEST_F(Probes, ALineIsPartedWhereNothingConducts) {
    Problem strip;
    strip.materials.push_back("2 0 0 0 0 0");
    for (int x = 0; x <= 3; ++x) {
        strip.Node(x, 0);
        strip.Node(x, 1);
    }
    strip.Element("4 2 1 3 0 0 0 0", 4);
    strip.Element("6 4 3 5 0 0 0 0", 4, "1", 2);
    strip.Element("8 6 5 7 0 0 0 0", 4);
    Show(strip, {1, 2, 4});
    const auto pieces = SampleLine(scene, -1, 0, 4, 1, 500);
    ASSERT_EQ(pieces.size(), 2);
    const double length = std::hypot(5, 1);
    EXPECT_NEAR(pieces[0].front().distance, length / 5, length / 400);
    EXPECT_NEAR(pieces[0].back().distance, 2 * length / 5, length / 400);
    EXPECT_NEAR(pieces[1].back().distance, 4 * length / 5, length / 400);
    for (const auto& piece : pieces) {
        for (const SectionSample& sample : piece) {
            const double part = sample.distance / length;
            EXPECT_NEAR(sample.temperature, 1 + 2 * (5 * part - 1) + 4 * part, 1e-3);
        }
    }
}

}  // namespace
}  // namespace kaldra
