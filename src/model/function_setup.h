// What every run prepares before its iterations: the slopes of all functions, and which nodes have an equation.
#pragma once

namespace kaldra {

// Fits every function and sets EquationCode to its first state. Gives 1, or 0 after a message: 1173 with 1118, 1174,
// 1131 or 1008 for the table, or 1138. A failed smoothing shows 1081 or 1117 and the setup goes on with the plain fit.
// Front end's thread, once per run, after the model is read.
[[nodiscard]] int SetupFunctions();

}  // namespace kaldra
