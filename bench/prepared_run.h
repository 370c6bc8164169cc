// What the benchmarks share: the N by N squares of tools/square_problem, and the model as a run of them has it before
// it iterates. Whatever fails ends the program with a line that says so.
#pragma once

#include <cstdint>
#include <string>

#include "solver/solution.h"
#include "square_problem.h"

namespace kaldra {

void Require(bool condition, const char* what);

// The data file of a square, written when it is first asked for.
[[nodiscard]] std::string ProblemFile(std::int64_t n, SquareKind kind);

void ReadProblem(std::int64_t n, SquareKind kind);

// Reads the square and makes every table of its run. Does nothing where the model is prepared so already.
void PrepareRun(std::int64_t n, SquareKind kind, Solver solver);

}  // namespace kaldra
