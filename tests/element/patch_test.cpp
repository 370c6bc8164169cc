// Whole problems whose solution is known: linear fields in every element family.

#include <algorithm>
#include <map>

#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using Patch = KaldraTest;

double Field(double x, double y) { return 7 - 3 * x + 2 * y; }

struct Family {
    const char* cells;  // of the four cells: Q one quadrilateral, T two triangles
    const char* sides;  // which edges carry a side node: none, all, some
    int quadPoints, trianglePoints;
};

// Three by three corners with the middle one off centre, side nodes off the middle of the inner edges.
struct PatchMesh : Problem {
    explicit PatchMesh(const Family& f) : family(f) {
        for (int i = 0; i < 9; ++i) AddNode(i == 4 ? 1.5 : 2.0 * (i % 3), i == 4 ? 1.25 : i / 3 * 2.0);
        for (int cell = 0; cell < 4; ++cell) {
            const int a = 1 + cell % 2 + 3 * (cell / 2);  // lower left corner of the cell
            if (family.cells[cell] == 'Q') {
                AddElement({a + 4, a + 3, a, a + 1});
            } else {
                AddElement({a, a + 1, a + 4});
                AddElement({a, a + 4, a + 3});
            }
        }
    }
    std::int32_t AddNode(double x, double y) {
        places.push_back({x, y});
        const bool outer = std::min(x, y) == 0 || std::max(x, y) == 4;
        return outer ? FixedNode(x, y, Field(x, y)) : Node(x, y);
    }
    std::int32_t SideNode(std::int32_t a, std::int32_t b) {
        const auto edge = std::minmax({a, b});
        const std::string_view sides = family.sides;
        if (sides == "none" || (sides == "some" && (a + b) % 4 >= 2)) return 0;
        if (const auto known = sideNodes.find(edge); known != sideNodes.end()) return known->second;
        const auto [xa, ya] = places[IndexOf(a)];
        const auto [xb, yb] = places[IndexOf(b)];
        const bool outer = (xa == xb && (xa == 0 || xa == 4)) || (ya == yb && (ya == 0 || ya == 4));
        const double bent = outer ? 0 : 0.1;
        return sideNodes[edge] = AddNode((xa + xb) / 2 + bent, (ya + yb) / 2 - bent / 2);
    }
    void AddElement(const std::vector<std::int32_t>& corners) {
        std::string slots, sideSlots;
        const std::size_t n = corners.size();
        for (std::size_t i = 0; i < 4; ++i) {
            slots += std::to_string(i < n ? corners[i] : 0) + ' ';
            sideSlots += std::to_string(i < n ? SideNode(corners[i], corners[(i + 1) % n]) : 0) + ' ';
        }
        Element(slots + sideSlots, n == 4 ? family.quadPoints : family.trianglePoints, "2.5");
    }

    Family family;
    std::vector<std::array<double, 2>> places;
    std::map<std::pair<std::int32_t, std::int32_t>, std::int32_t> sideNodes;
};

// The flows add up to nothing, and weighted by x to conductivity times thickness times dT/dx times the area; by y
// alike.
TEST_F(Patch, LinearFieldsAreExactInEveryFamily) {
    for (const Family& family : {Family{"TTTT", "none", 4, 1},
                                 {"TTTT", "none", 4, 3},
                                 {"TTTT", "all", 4, 3},
                                 {"TTTT", "some", 4, 3},
                                 {"QQQQ", "none", 4, 3},
                                 {"QQQQ", "none", 9, 3},
                                 {"QQQQ", "all", 4, 3},
                                 {"QQQQ", "all", 9, 3},
                                 {"QQQQ", "some", 9, 3},
                                 {"QTTQ", "none", 4, 3},
                                 {"TQQT", "all", 9, 3},
                                 {"QTQT", "some", 9, 3}}) {
        SCOPED_TRACE(std::string(family.cells) + " with side nodes: " + family.sides);
        const Outcome run = Run(PatchMesh(family));
        ASSERT_EQ(run.result, 1);
        double sum = 0, byX = 0, byY = 0;
        for (std::size_t n = 0; n < run.model.nodes.size(); ++n) {
            const double x = static_cast<double>(run.model.nodes[n].x), y = static_cast<double>(run.model.nodes[n].y);
            const double flow = static_cast<double>(run.model.SolutionVector[n]);
            EXPECT_NEAR(run.model.nodeStates[n].temperature, Field(x, y), 5e-6) << "node " << n + 1;
            sum += flow;
            byX += x * flow;
            byY += y * flow;
        }
        EXPECT_NEAR(sum, 0, 1e-4);
        EXPECT_NEAR(byX, 2 * 2.5 * -3 * 16, 1e-3);
        EXPECT_NEAR(byY, 2 * 2.5 * 2 * 16, 1e-3);
    }
}

}  // namespace
}  // namespace kaldra
