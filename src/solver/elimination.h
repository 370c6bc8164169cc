// The prescribed temperatures of one iteration's system.
//
// Equation j is node j + 1. Codes: 0 free, 1 prescribed, 9 inactive. Calculation thread only.
#pragma once

#include <cstdint>
#include <span>

#include "model/run_tables.h"

namespace kaldra {

// Moves the columns of the prescribed equations to the right-hand side of the free ones. The matrix stays as it was
// assembled: who factorises it takes a prescribed equation for one that gives its value, with nothing beside the
// diagonal. Inactive equations are neither read nor changed. Gives 1; 0 after message 1138, or without one when Stop
// was pressed.
[[nodiscard]] int EliminateFixedDouble(SystemMatrix& matrix, std::span<float> rhs, std::span<const std::int32_t> code);

// Looks at the diagonal as it was assembled, before any reduction: an equation that received no conduction cannot be
// solved. Gives 1; 0 after message 1170 (first equation) or 1171 (a later one), or without one when Stop was pressed.
[[nodiscard]] int CheckPivots(const SystemMatrix& matrix, std::span<const std::int32_t> code);

}  // namespace kaldra
