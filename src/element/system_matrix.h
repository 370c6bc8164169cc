// The sparse matrix of one iteration: where its entries stand, and their sums over the elements.
//
// Every entry lists the element entries that it is the sum of, in the order in which a walk over the elements meets
// them. So any thread may sum it, and the f64 sum is always the same. Calculation thread only; the work is spread over
// all threads.
#pragma once

namespace kaldra {

// Makes model.system for the elements of model.batches. Gives 1; 0 after message 1138, or without one when Stop was
// pressed.
[[nodiscard]] int BuildSystemMatrix();

// Sums every entry of the matrix.
void SumMatrixEntries();

// Adds Cap T old to the right-hand side of the free equations.
void AddElementLoads();

}  // namespace kaldra
