// Boundary data to boundary values: constants, functions of time, modifiers of temperature, fluxes on edges and areas.
//
// Everything ends in two node fields: EquationCode 1 with a temperature in bcValue, or code 0 with a nodal heat flow in
// bcValue. Nodes of code 9 are passed over. Calculation thread only.
#pragma once

#include <cstdint>

namespace kaldra {

// Boundary values of the step under way. Gives 1, or 0 after message 1029 (a function in a steady-state analysis) or
// 1028.
[[nodiscard]] int PrepareBoundaryValues();

// Rebuilds qApplied: in plan view from nodal areas, otherwise from the qBOUNDARY edges in the ratios of their element
// side, 1 : 1 or 1 : 4 : 1. Gives 1.
[[nodiscard]] int BuildBoundaryFluxes();

// Value of boundary function `function` (1-based) for a node: at the step's elapsed time (its remainder by the period
// of a repeating function), for types 6 and 7 at the function's fixedArgument; above that `out` is left alone. Gives 1.
int BoundaryFunctionValue(std::int32_t node, std::int32_t function, float& out);

// Value of modifier function `function` (1-based) at the node's previous temperature. Gives 1.
int ModifierFactor(std::int32_t node, std::int32_t function, float& out);

// Finds the side node of every qBOUNDARY edge. Once per run. Gives 1.
[[nodiscard]] int FindQBoundaryElements();

// Gives every unit flux node its share of the element areas, by lumping the diagonal of the consistent mass matrix
// (E. Hinton, T. Rock, O. C. Zienkiewicz, Earthquake Engng. Struct. Dyn. 4, 1976). Once per run, in plan view. Gives 1,
// or 0 after the box of a zero or negative area (1194).
[[nodiscard]] int ComputeNodalAreas();

}  // namespace kaldra
