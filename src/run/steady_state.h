// The steady-state analysis: one nonlinear solution at step 0.
#pragma once

namespace kaldra {

// Assembles, solves and measures until the solution has converged, maxIterations is reached or Halt Iteration is
// pressed, then writes the results, whatever ended the iteration. Gives 1 when the result files are written; 0 after a
// message, or without one when Stop was pressed. Calculation thread, after a whole StartAnalysis.
[[nodiscard]] int RunSteadyState();

}  // namespace kaldra
