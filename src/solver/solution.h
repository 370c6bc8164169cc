// The solution of one iteration's system, and what of it need not be done again.
//
// Calculation thread only.
#pragma once

namespace kaldra {

// Prepares the factorisation of model.system, once per run. Gives 1; 0 after message 1138, or without one when Stop was
// pressed.
[[nodiscard]] int PrepareSolution();

// Turns SolutionVector, a right-hand side without prescribed columns, into the solution. A matrix that is the same as
// at the last factorisation is not factorised again, and a right-hand side that is the same too gives the last
// solution. Gives 1; 0 after message 1170, 1171 or 1138, or without one when Stop was pressed.
[[nodiscard]] int SolveSystem();

}  // namespace kaldra
