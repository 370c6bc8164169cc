// The linear system of one iteration, and the nodal flows after a step.
//
//     steady state   K(T last) T = Q
//     transient      (dt K(T mean) + Cap) T = dt Q + Cap T old
//
// Elements are formed in f32 and summed in f64 in SkylineStore; the right-hand side is SolutionVector. Prescribed
// temperatures stand unscaled in the right-hand side and enter by EliminateFixedDouble. Calculation thread only.
// Both assemblies give 1; 0 after a message of the element code, or without one when Stop was pressed.
#pragma once

namespace kaldra {

[[nodiscard]] int AssembleSteadySystem();

[[nodiscard]] int AssembleTransientSystem();

// Replaces SolutionVector by the heat that the boundary feeds into each boundary node, from the values recorded by the
// last assembly. Every other node gets 0. Gives 1; 0 after message 1138, or without one when Stop was pressed.
[[nodiscard]] int ComputeNodalFlows();

// Lists the elements that feed nodal flows, once per run. Gives 1, or 0 after message 1138.
[[nodiscard]] int FindBoundaryElements();

}  // namespace kaldra
