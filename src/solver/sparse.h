// Sparse LDLT solution of one iteration's linear system, by fronts: every supernode of model.tree gathers its entries
// and what its children leave in a dense front, eliminates its pivots there, and leaves the remainder to its parent.
//
// Everything is added in a fixed order, so the result is the same for any number of threads. Calculation thread only;
// the work is spread over all threads.
#pragma once

#include <span>

namespace kaldra {

// Makes the tables of model.sparse for model.tree. False, without a message, if the memory cannot be had.
[[nodiscard]] bool TryMakeSparseFactor();

// Bytes that they take, with what a factorisation takes besides.
[[nodiscard]] double BytesOfSparse();

// Factorises the free equations of model.system, and reduces the right-hand side `rhs` on the way, by factors that the
// cache still holds. Gives 1, or 0 when Stop was pressed.
[[nodiscard]] int FactorSparse(std::span<const float> rhs);

// Reduces another right-hand side by the last factorisation. Gives 1, or 0 when Stop was pressed.
[[nodiscard]] int ReduceSparse(std::span<const float> rhs);

// Puts the solution for the right-hand side that was reduced last in the free equations of `rhs`; the others keep
// theirs. Gives 1, or 0 when Stop was pressed.
[[nodiscard]] int SolveSparse(std::span<float> rhs);

}  // namespace kaldra
