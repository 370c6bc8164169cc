// The transient analysis: a march over the time steps, with a nonlinear iteration and the phase-change control in each.
#pragma once

namespace kaldra {

// Marches from startStep to stepCount. A step ends when the iteration has converged with nothing left to switch and
// then once more, at maxIterations, or by Halt Iteration; its results are written if it is a saved one. Gives 1 when
// all steps are done; 0 after a message, or without one when Stop was pressed. Calculation thread, after a whole
// StartAnalysis.
[[nodiscard]] int RunTransient();

}  // namespace kaldra
