// Every function value of the system: the piecewise cubic Hermite curve through the points with their fitted slopes.
//
// Defined for every argument, no state, no allocation. Outside its range a function keeps its end value.
#pragma once

#include <span>
#include <vector>

#include "functions/lane_function.h"
#include "model/problem_model.h"

namespace kaldra {

// y at x; 0 for a function without points.
[[nodiscard]] double EvaluateFunction(std::span<const FunctionPoint> points, float x);

// dy/dx at x; outside the range the slope at that end, though the value there stands still.
[[nodiscard]] double EvaluateFunctionSlope(std::span<const FunctionPoint> points, float x);

// Fills in what the kernels read of a function, from tables that must outlive it. Gives 1, or 0 after message 1138.
[[nodiscard]] int MakeLaneFunction(std::span<const FunctionPoint> points, LaneFunctionTables& tables,
                                   LaneFunction& function);

}  // namespace kaldra
