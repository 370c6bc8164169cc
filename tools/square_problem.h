// A square of n by n quadrilaterals as a problem to time or to try things on.
#pragma once

#include <string>

namespace kaldra {

// Steady state with a conductivity that depends on temperature; 20 steps of constant properties and another surface
// temperature in each; or 20 steps of freezing from above.
enum class SquareKind { Steady, Linear, Freezing };

// Writes a data file: 1 m by 1 m, four-node quadrilaterals with 2 by 2 points, nodes numbered up the columns, bottom
// and top temperatures prescribed. Gives false if the file cannot be written.
[[nodiscard]] bool WriteSquareProblem(const std::string& path, int n, SquareKind kind);

}  // namespace kaldra
