// Slopes of a function given by points: a cubic spline whose continuity equations carry weights, and a smoothing stage.
//
// The procedures work on points of the caller and keep nothing. Work arrays are f32; formulas are evaluated in f64 and
// narrowed when they are stored.
#pragma once

#include <span>

#include "model/problem_model.h"

namespace kaldra {

// Sets the slope of every point. The slopes m solve
//
//     first    2 m[0] + m[1] = 3 secant(0)
//     inner    L m[i-1] + 2 m[i] + (1 - L) m[i+1] = 3 (1 - L) secant(i) + 3 L secant(i-1)
//     last     m[n-2] + 2 m[n-1] = 3 secant(n-2)
//
// with L = wL h2 / (wR h1 + wL h2) and w = 1 / (1 + s^2)^weight, s being the steepness of the segment on the unit
// square. With weight 0 this is the cubic spline with natural ends (de Boor, A Practical Guide to Splines, ch. IV).
// Gives 1, or 0 after message 1173 (x does not rise strictly, fewer than two points) or 1138.
[[nodiscard]] int FitSlopes(std::span<FunctionPoint> points, float weight);

// Solves the tridiagonal system with the constant `diagonal` into the slopes; lower[0] and upper[n-1] are not read.
// Gives 1, 0 for a zero pivot, or 0 after message 1138.
[[nodiscard]] int SolveTridiagonal(std::span<FunctionPoint> points, std::span<const float> lower, float diagonal,
                                   std::span<const float> upper, std::span<const float> rhs);

// Moves the points onto the cubic smoothing spline (C. H. Reinsch, Numerische Mathematik 10, 1967) that minimises
// smoothing * sum (y - g(X))^2 + integral g''(X)^2, X being x scaled to a span of 100. Leaves no usable slope.
// Gives 1, or 0 after message 1081, 1117 or 1138 with the points as they were.
[[nodiscard]] int SmoothPoints(std::span<FunctionPoint> points, float smoothing);

// Copies source to destination (they may be the same), smooths there and fits slopes. Gives the result of FitSlopes.
[[nodiscard]] int SmoothAndFit(std::span<const FunctionPoint> source, std::span<FunctionPoint> destination,
                               float smoothing, float weight);

}  // namespace kaldra
