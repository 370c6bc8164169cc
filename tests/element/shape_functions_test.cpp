#include "element/shape_functions.h"

#include <cmath>
#include <numeric>

#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using SlotUse = std::array<std::int32_t, slotCount>;

using Positions = std::array<std::array<float, 2>, slotCount>;

// Where the slots lie, and the members of the family by the slots that they use.
const Positions quadrilateral{{{1, 1}, {-1, 1}, {-1, -1}, {1, -1}, {0, 1}, {-1, 0}, {0, -1}, {1, 0}}};
const Positions triangle{{{0, 0}, {1, 0}, {0, 1}, {}, {0.5F, 0}, {0.5F, 0.5F}, {0, 0.5F}, {}}};
const Positions line{{{1, 0}, {-1, 0}, {}, {}, {0, 0}, {}, {}, {}}};
const std::vector<SlotUse> members{{1, 2},
                                   {1, 2, 0, 0, 3},
                                   {1, 2, 3},
                                   {1, 2, 3, 0, 0, 4},
                                   {1, 2, 3, 0, 4, 5, 6},
                                   {1, 2, 3, 4},
                                   {1, 2, 3, 4, 0, 5},
                                   {1, 2, 3, 4, 5, 0, 6, 7},
                                   {1, 2, 3, 4, 5, 6, 7, 8}};

SlotValues FunctionsAt(float r, float s, const SlotUse& slots) {
    SlotValues N;
    ShapeFunctions(N, r, s, slots);
    return N;
}

TEST(ShapeFunctions, AreOneAtTheirOwnNodeAndSumToOne) {
    for (const SlotUse& slots : members) {
        const Positions& positions = slots[3] != 0 ? quadrilateral : slots[2] != 0 ? triangle : line;
        for (std::size_t own = 0; own < slotCount; ++own) {
            if (slots[own] == 0) continue;
            std::vector<float> expected(slotCount);
            expected[own] = 1;
            EXPECT_THAT(FunctionsAt(positions[own][0], positions[own][1], slots), Near(1e-6F, expected));
        }
        const SlotValues N = FunctionsAt(-0.75F, 0.3F, slots);
        EXPECT_NEAR(std::accumulate(N.begin(), N.end(), 0.0), 1, 1e-6);
        for (std::size_t slot = 0; slot < slotCount; ++slot) EXPECT_TRUE(slots[slot] != 0 || N[slot] == 0);
    }
}

TEST(ShapeFunctions, DerivativesAreTheirSlopes) {
    constexpr float h = 1.0F / 64, r = 0.25F, s = -0.75F;  // central differences are exact for functions of degree two
    for (const SlotUse& slots : members) {
        SlotGradients dN;
        ShapeDerivatives(dN, r, s, slots);
        for (std::size_t i = 0; i < slotCount; ++i) {
            const float byR = FunctionsAt(r + h, s, slots)[i] - FunctionsAt(r - h, s, slots)[i];
            const float byS = FunctionsAt(r, s + h, slots)[i] - FunctionsAt(r, s - h, slots)[i];
            EXPECT_NEAR(dN[i], byR / (2 * h), 2e-5);
            EXPECT_NEAR(dN[slotCount + i], byS / (2 * h), 2e-5);
        }
    }
}

TEST(ShapeFunctions, TrianglesAndLinesIgnoreSlotsWithoutASide) {
    EXPECT_THAT(FunctionsAt(0.25F, 0.25F, {1, 2, 3, 0, 0, 0, 0, 9}), ElementsAre(0.5F, 0.25F, 0.25F, 0, 0, 0, 0, 0));
    EXPECT_THAT(FunctionsAt(0.5F, 0, {1, 2, 0, 0, 0, 7, 8, 9}), ElementsAre(0.75F, 0.25F, 0, 0, 0, 0, 0, 0));
}

// r^a s^b over the reference domain: 4 / ((a + 1)(b + 1)) for even powers on the square, a! b! / (a + b + 2)! on the
// triangle.
TEST(IntegrationRules, AreExactUpToTheirDegree) {
    struct Moment {
        std::size_t points;
        int a, b;
        double integral;
    };
    const std::vector<Moment> moments{{1, 0, 0, 1.0 / 2},  {1, 1, 0, 1.0 / 6},  {3, 0, 0, 1.0 / 2}, {3, 0, 1, 1.0 / 6},
                                      {3, 2, 0, 1.0 / 12}, {3, 1, 1, 1.0 / 24}, {4, 0, 0, 4},       {4, 1, 0, 0},
                                      {4, 2, 2, 4.0 / 9},  {4, 3, 3, 0},        {9, 0, 0, 4},       {9, 4, 4, 4.0 / 25},
                                      {9, 4, 2, 4.0 / 15}, {9, 2, 4, 4.0 / 15}, {9, 5, 4, 0}};
    for (const Moment& m : moments) {
        RuleTable rule{};
        GetIntegrationRule(rule, m.points);
        double sum = 0;
        for (const auto& [r, s, wr, ws] : std::span(rule).first(m.points)) {
            sum += static_cast<double>(wr * ws) * std::pow(r, m.a) * std::pow(s, m.b);
        }
        EXPECT_NEAR(sum, m.integral, 1e-6) << m.points << " points, r^" << m.a << " s^" << m.b;
    }
    RuleTable unchanged{};
    GetIntegrationRule(unchanged, 2);
    EXPECT_EQ(unchanged[0].wr, 0);
}

// The points come in the order of the slots, as the result files number them.
TEST(IntegrationRules, FollowTheSlots) {
    for (const std::size_t points : {4, 9}) {
        RuleTable rule{};
        GetIntegrationRule(rule, points);
        const float outer = rule[0].r;
        for (std::size_t i = 0; i < std::min<std::size_t>(points, 8); ++i) {
            EXPECT_EQ(rule[i].r, outer * quadrilateral[i][0]) << i;
            EXPECT_EQ(rule[i].s, outer * quadrilateral[i][1]) << i;
            EXPECT_EQ(rule[i].wr > rule[i].ws, quadrilateral[i][0] == 0) << i;
        }
    }
}

}  // namespace
}  // namespace kaldra
