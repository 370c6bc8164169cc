// Scenes for the tests of pictures: a problem read from a file, with temperatures a + b x + c y at its nodes.
#pragma once

#include "post/result_set.h"
#include "support/kaldra_test.h"
#include "view/scene.h"

namespace kaldra {

struct LinearField {
    double a = 0, b = 0, c = 0;
    [[nodiscard]] double At(double x, double y) const { return a + b * x + c * y; }
};

class ViewTest : public KaldraTest {
protected:
    // Makes `scene` and `results` of the problem. Point p of element index e has conductivity e + 1 + p / 10 and half
    // of that as unfrozen water.
    void Show(const Problem& problem, const LinearField& field) {
        ResultSet set;
        ASSERT_EQ(OpenResultSet(WriteFile("case.kdr", problem.Text()), set), 1);
        ASSERT_EQ(BuildScene(scene), 1);
        results = {};
        results.nodes.resize(static_cast<std::size_t>(model.nodeCount));
        for (std::size_t n = 0; n < results.nodes.size(); ++n) {
            const NodeRec& node = model.nodes[n];
            results.nodes[n].temperature =
                static_cast<float>(field.At(static_cast<double>(node.x), static_cast<double>(node.y)));
        }
        results.points.resize(static_cast<std::size_t>(model.pointTotal));
        for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
            for (std::size_t p = 0; p < PointCount(e); ++p) {
                PointResult& point = results.points[PointsBegin(e) + p];
                point.conductivity = static_cast<float>(e + 1) + static_cast<float>(p) / 10;
                point.unfrozenWater = point.conductivity / 2;
                point.fluxX = 1;
            }
        }
        results.sections.resize(static_cast<std::size_t>(model.fluxSectionCount), {12.5F, 0, 0});
        ASSERT_EQ(SetSceneStep(scene, results), 1);
    }

    Scene scene;
    StepResults results;
};

// One quadrilateral 0..4 by 0..2 whose side nodes exist as `sides` tells; that of the upper side is raised by 0.5.
inline Problem Quadrilateral(const std::array<bool, 4>& sides) {
    Problem problem;
    const double places[8][2] = {{4, 2}, {0, 2}, {0, 0}, {4, 0}, {2, 2.5}, {0, 1}, {2, 0}, {4, 1}};
    std::string slots;
    for (std::size_t slot = 0; slot < slotCount; ++slot) {
        const bool isThere = slot < 4 || sides[slot - 4];
        slots += std::to_string(isThere ? problem.Node(places[slot][0], places[slot][1]) : 0) + ' ';
    }
    problem.Element(slots, 9);
    return problem;
}

// The triangle (0, 0), (4, 0), (0, 3), with all its side nodes; that of the lower side is lowered by 0.5.
inline Problem BentTriangle() {
    Problem problem;
    for (const auto& [x, y] : {std::pair(0.0, 0.0), {4.0, 0.0}, {0.0, 3.0}, {2.0, -0.5}, {2.0, 1.5}, {0.0, 1.5}}) {
        problem.Node(x, y);
    }
    problem.Element("1 2 3 0 4 5 6 0", 3);
    return problem;
}

// A unit square beside an element that is infinite along x, and one infinite in both directions at its upper corner;
// pole at (-9, -4).
inline Problem Unbounded() {
    Problem problem;
    problem.pole = "POLE 1\n-9 -4";
    for (const auto& [x, y] : {std::pair(0.0, 0.0), {1.0, 0.0}, {1.0, 1.0}, {0.0, 1.0}, {1.0, 0.5}}) problem.Node(x, y);
    problem.Element("3 4 1 2 0 0 0 5", 4);
    const int farAbove = problem.Node(70, 1);
    const int farBelow = problem.Node(70, 0);
    const int corner = problem.Node(80, 80);
    const int above = problem.Node(1, 60);
    problem.Element(std::to_string(farAbove) + " 3 2 " + std::to_string(farBelow) + " 0 5 0 0", 4, "1 1 0");
    problem.Element(
        std::to_string(corner) + " " + std::to_string(above) + " 3 " + std::to_string(farAbove) + " 0 0 0 0", 4,
        "1 1 1");
    return problem;
}

}  // namespace kaldra
