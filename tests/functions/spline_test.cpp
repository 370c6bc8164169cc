#include "functions/spline_fit.h"

#include <cmath>

#include "functions/function_value.h"
#include "platform/faults.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using Spline = KaldraTest;
using Points = std::vector<FunctionPoint>;

Points At(const std::vector<float>& x, const std::vector<float>& y) {
    Points points;
    for (std::size_t i = 0; i < x.size(); ++i) points.push_back({x[i], y[i], 99});
    return points;
}

std::vector<float> Field(const Points& points, float FunctionPoint::*field) {
    std::vector<float> values;
    for (const FunctionPoint& point : points) values.push_back(point.*field);
    return values;
}

// Natural splines whose moments are solved by hand. With a weight the flat segment of the last two cases gains on the
// steep one, whose steepness on the unit square is 2: by 1 against 1/5, and in the end altogether.
TEST_F(Spline, SlopesMatchClosedForms) {
    struct Fit {
        std::vector<float> x, y;
        float weight;
        std::vector<float> slopes;
    };
    for (const Fit& fit : {Fit{{0, 1, 2}, {0, 1, 0}, 0, {1.5F, 0, -1.5F}},
                           {{0, 1, 3}, {0, 1, 0}, 0, {1.25F, 0.5F, -1}},
                           {{-3, 5}, {2, 6}, 7, {0.5F, 0.5F}},
                           {{0, 1, 4, 6}, {1, 3, 9, 13}, 2, {2, 2, 2, 2}},
                           {{0, 1, 5, 6}, {4, 4, 4, 4}, 2, {0, 0, 0, 0}},
                           {{0, 1, 2}, {0, 0, 1}, 50, {0, 0, 1.5F}},
                           {{0, 1, 2}, {0, 0, 1}, 1, {-1.0F / 12, 1.0F / 6, 17.0F / 12}}}) {
        Points points = At(fit.x, fit.y);
        EXPECT_EQ(FitSlopes(points, fit.weight), 1);
        EXPECT_THAT(Field(points, &FunctionPoint::slope), Near(1e-6F, fit.slopes));
    }
}

// Four points at y 0, 1, 1, 0 move by 1 / (5/6 h^3 w + 2), h being 100/3: w = 12 / (5 h^3) gives a quarter, a large one
// nothing, and a small one the mean of 1/2.
TEST_F(Spline, SmoothingMatchesItsClosedFormAndLimits) {
    const auto smoothed = [](Points points, float w) {
        EXPECT_EQ(SmoothPoints(points, w), 1);
        return Field(points, &FunctionPoint::y);
    };
    const Points arch = At({10, 13, 16, 19}, {0, 1, 1, 0});
    EXPECT_THAT(smoothed(arch, 6.48e-5F), Near(2e-5F, {0.25F, 0.75F, 0.75F, 0.25F}));
    EXPECT_THAT(smoothed(arch, 1e6F), Near(2e-5F, {0, 1, 1, 0}));
    EXPECT_THAT(smoothed(arch, 1e-10F), Near(2e-5F, {0.5F, 0.5F, 0.5F, 0.5F}));
    EXPECT_THAT(smoothed(At({0, 1, 2.5F, 4, 5}, {1, 3, 6, 9, 11}), 1e-3F), Near(2e-5F, {1, 3, 6, 9, 11}));
    EXPECT_THAT(smoothed(At({0, 1, 4}, {1, 8, 2}), 1e-3F), ElementsAre(1, 8, 2));  // too few points to move
}

// With g the moved points, h their scaled distance and u the second derivatives of the natural spline through them, the
// minimum has w (y - g) = second difference of u / h, and u itself h/6, 2h/3, h/6 by rows = second difference of g / h.
TEST_F(Spline, SmoothingReachesItsMinimum) {
    constexpr float w = 2e-4F, h = 100.0F / 6;
    const std::vector<float> y{3, -1, 4, 1, -5, 9, 2};
    Points points = At({-6, -4, -2, 0, 2, 4, 6}, y);
    ASSERT_EQ(SmoothPoints(points, w), 1);
    EXPECT_THAT(Field(points, &FunctionPoint::x), Near(1e-5F, {-6, -4, -2, 0, 2, 4, 6}));
    const std::vector<float> g = Field(points, &FunctionPoint::y);
    std::vector<float> u(8);  // from the left end, where it is 0
    for (std::size_t p = 0; p < 7; ++p) u[p + 1] = h * w * (y[p] - g[p]) + 2 * u[p] - (p == 0 ? 0 : u[p - 1]);
    EXPECT_NEAR(u[6], 0, 1e-5);  // as at the right end and beyond
    EXPECT_NEAR(u[7], 0, 1e-5);
    for (std::size_t p = 1; p < 6; ++p) {
        const float bend = (g[p - 1] - 2 * g[p] + g[p + 1]) / h;
        EXPECT_NEAR(h / 6 * u[p - 1] + 2 * h / 3 * u[p] + h / 6 * u[p + 1], bend, 1e-4) << p;
        EXPECT_GT(std::abs(bend), 0.001F);
    }
}

TEST_F(Spline, FailuresLeaveThePoints) {
    for (const std::vector<float>& x : {std::vector<float>{0, 1, 1}, {0, 2, 1}, {5}}) {
        Points points = At(x, {1, 2, 3});
        EXPECT_TRUE(FitSlopes(points, 0) == 0 && points[0].slope == 99);
    }
    EXPECT_THAT(TakeMessages(), ElementsAre(1173, 1173, 1173));
    Points one = At({1}, {1}), four = At({0, 1, 2, 3}, {0, 1, 1, 0}), repeated = At({0, 1, 1, 3}, {0, 1, 1, 0});
    EXPECT_EQ(SmoothPoints(one, 1) + SmoothPoints(four, 1e-20F) + SmoothPoints(four, -1) + SmoothPoints(repeated, 1),
              0);
    EXPECT_THAT(TakeMessages(), ElementsAre(1081, 1117, 1117, 1117));
    EXPECT_THAT(Field(four, &FunctionPoint::y), ElementsAre(0, 1, 1, 0));
    Points fitted(4);
    EXPECT_EQ(SmoothAndFit(four, fitted, -1, 0) + FitSlopes(four, 0), 2);  // the points as they stand get their slopes
    EXPECT_EQ(Field(fitted, &FunctionPoint::slope), Field(four, &FunctionPoint::slope));
    EXPECT_THAT(TakeMessages(), ElementsAre(1117));
    const std::vector<float> ones{1, 1};
    Points two = At({0, 1}, {0, 1});
    EXPECT_EQ(SolveTridiagonal(two, ones, 0, ones, ones) + SolveTridiagonal(two, ones, 1, ones, ones),
              0);  // zero pivots
}

// x^3 with its own slopes is the Hermite curve itself.
TEST_F(Spline, EvaluationIsExactForCubicsAndKeepsItsEnds) {
    const Points cubic{{-1, -1, 3}, {1, 1, 3}, {2, 8, 12}, {4, 64, 48}};
    for (const float x : {-1.0F, -0.5F, 0.0F, 0.75F, 1.0F, 1.5F, 2.0F, 3.0F, 4.0F}) {
        EXPECT_NEAR(EvaluateFunction(cubic, x), std::pow(x, 3), 1e-12) << x;
        EXPECT_NEAR(EvaluateFunctionSlope(cubic, x), 3 * std::pow(x, 2), 1e-12) << x;
    }
    EXPECT_TRUE(EvaluateFunction(cubic, -1e30F) == -1 && EvaluateFunction(cubic, 5) == 64);
    EXPECT_TRUE(EvaluateFunctionSlope(cubic, -7) == 3 && EvaluateFunctionSlope(cubic, 1e30F) == 48);
    EXPECT_EQ(EvaluateFunction(At({0, 1}, {6, 6}), 0.5F), 6);  // equal values need no slopes
    EXPECT_TRUE(EvaluateFunction({}, 1) == 0 && EvaluateFunctionSlope({}, 1) == 0);
}

}  // namespace
}  // namespace kaldra
