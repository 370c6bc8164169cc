// dgemm of the library beside which the factorisation is measured, loaded when the program runs so that nothing needs
// it.
#pragma once

#include <cstddef>

namespace kaldra {

// C = A B, square matrices of n by n in row order, on `threads` threads. Gives false where there is no such library.
[[nodiscard]] bool Dgemm(std::size_t n, const double* a, const double* b, double* c, int threads);

}  // namespace kaldra
