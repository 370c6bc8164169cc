// Skyline profile and LDLT solution of one iteration's linear system.
//
// The upper triangle is stored in groups of eight columns (solver/dense_kernels.h draws one); the three groups of a
// strip begin at the first row that any of their columns holds, rounded down to a multiple of eight. Equation j is node
// j + 1, so the node numbers of the data file decide the profile. An equation that is prescribed or inactive has 1 on
// the diagonal and 0 beside it. Calculation thread only; the work is spread over all threads.
#pragma once

#include <cstdint>
#include <span>

#include "model/run_tables.h"

namespace kaldra {

// Sets the tops of the strips and SkylineColumnPtr, the position of every diagonal. Gives 1, or 0 after message 1138.
[[nodiscard]] int BuildSkylineProfile();

// What a factorisation by this profile takes: entries of SkylineStore, and multiplications and additions.
struct SkylineCost {
    double entries = 0;
    double operations = 0;
};
[[nodiscard]] SkylineCost CostOfSkyline();

// Makes SkylineStore for the profile. False, without a message, if the memory cannot be had.
[[nodiscard]] bool TryMakeSkylineStore();

// Copies the matrix into the store and factorises it there. Gives 1; 0 after message 1138, or without one when Stop was
// pressed.
[[nodiscard]] int FactorSkyline();

// Turns the right-hand side into the solution, by the last factorisation. Gives 1; 0 after message 1138, or without one
// when Stop was pressed.
[[nodiscard]] int SolveSkylineDouble(std::span<float> rhs);

}  // namespace kaldra
