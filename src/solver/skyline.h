// Skyline profile and LDLT solution of one iteration's linear system.
//
// The upper triangle is stored column after column, each from its first non-zero row to the diagonal.
// Column heights 1, 2, 3, 2 stand like this:
//
//     row 0   [ 0  1  3  . ]
//     row 1   [    2  4  . ]     ptr = { 0, 2, 5, 7 }
//     row 2   [       5  6 ]     entry (i, j) is store[ptr[j] - j + i]
//     row 3   [          7 ]
//
// Equation j is node j + 1, so the node numbers of the data file decide the profile. Codes: 0 free, 1 prescribed,
// 9 inactive. An inactive equation is passed over everywhere, and its entries in the columns of others hold 0, as the
// assembly leaves them. Every iteration assembles, eliminates, solves. Calculation thread only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kaldra {

// Sets SkylineColumnPtr (nodeCount entries) from the elements, NULL elements included. Gives 1, or 0 after message 1138
// for a profile that 32-bit positions cannot hold.
[[nodiscard]] int BuildSkylineProfile();

// Entries of SkylineStore for the present profile.
[[nodiscard]] std::size_t SkylineLength();

// Makes every prescribed equation solve to its value and moves its column to the free equations' right-hand side.
// Gives 1; 0 after message 1138, or without one when Stop was pressed.
[[nodiscard]] int EliminateFixedDouble(std::span<double> store, std::span<float> rhs,
                                       std::span<const std::int32_t> code, std::span<const std::int32_t> ptr);

// Factorises the store in place and turns the right-hand side into the solution. The pivot test looks at the diagonal
// as it was assembled, before any reduction. Gives 1; 0 after message 1170 (first equation), 1171 (a later one) or
// 1138, or without one when Stop was pressed.
[[nodiscard]] int SolveSkylineDouble(std::span<double> store, std::span<float> rhs, std::span<const std::int32_t> code,
                                     std::span<const std::int32_t> ptr);

}  // namespace kaldra
