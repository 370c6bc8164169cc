// The solution of one iteration's system, and what of it need not be done again.
//
// Calculation thread only.
#pragma once

namespace kaldra {

// The ways to solve a system. The skyline serves ordinary problems; the sparse solution large ones and those whose node
// numbers make a wide profile.
enum class Solver { Automatic, Skyline, Sparse };

// Sets the way for the runs that follow; Automatic takes the skyline unless the sparse solution is faster or smaller by
// a clear factor. Not while a run is under way.
void WishSolver(Solver solver);

// The way that the last run was prepared for; Automatic before the first.
[[nodiscard]] Solver UsedSolver();

// Prepares the factorisation of model.system, once per run; which equations are free may not change after it. Gives 1;
// 0 after message 1138, or without one when Stop was pressed.
[[nodiscard]] int PrepareSolution();

// Turns SolutionVector, a right-hand side without prescribed columns, into the solution. A matrix that is the same as
// at the last factorisation is not factorised again, and a right-hand side that is the same too gives the last
// solution. Gives 1; 0 after message 1170, 1171 or 1138, or without one when Stop was pressed.
[[nodiscard]] int SolveSystem();

}  // namespace kaldra
