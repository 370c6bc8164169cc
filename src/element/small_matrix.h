// Small dense matrices: flat row-major arrays of f32 that the caller owns.
//
// An m by n matrix has entry (i, j) at i * n + j. Every stored value is evaluated in f64 and narrowed, so a sum of
// products is narrowed after every term. Nothing is allocated or checked; a count of 0 leaves the output untouched, or
// cleared where the contract says so. Shapes are constants at the call, so that the loops unroll.
#pragma once

#include <algorithm>
#include <cstddef>

#include "platform/narrow.h"

namespace kaldra {

inline void VecZero(float* v, std::size_t n) { std::fill_n(v, n, 0.0F); }

inline void MatZero(float* A, std::size_t m, std::size_t n) { VecZero(A, m * n); }

// R (m by p) = A (m by n) B (n by p)
inline void MatMul(float* R, const float* A, const float* B, std::size_t m, std::size_t n, std::size_t p) {
    MatZero(R, m, p);
    for (std::size_t i = 0; i < m; ++i) {
        for (std::size_t j = 0; j < p; ++j) {
            float sum = 0;
            for (std::size_t k = 0; k < n; ++k) {
                const double term = static_cast<double>(A[i * n + k]) * static_cast<double>(B[k * p + j]);
                sum = Narrow(static_cast<double>(sum) + term);
            }
            R[i * p + j] = sum;
        }
    }
}

// y (m) = A (m by n) x (n)
inline void MatVec(float* y, const float* A, const float* x, std::size_t m, std::size_t n) { MatMul(y, A, x, m, n, 1); }

// A (m by n) times s
inline void MatScale(float* A, float s, std::size_t m, std::size_t n) {
    for (std::size_t i = 0; i < m * n; ++i) A[i] *= s;
}

// D (n by m) = S (m by n) transposed
inline void MatTranspose(float* D, const float* S, std::size_t m, std::size_t n) {
    for (std::size_t i = 0; i < m; ++i) {
        for (std::size_t j = 0; j < n; ++j) D[j * m + i] = S[i * n + j];
    }
}

// A (m by n) += B
inline void MatAdd(float* A, const float* B, std::size_t m, std::size_t n) {
    for (std::size_t i = 0; i < m * n; ++i) A[i] += B[i];
}

// R (n by n) = a b transposed
inline void VecOuter(float* R, const float* a, const float* b, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) R[i * n + j] = a[i] * b[j];
    }
}

// Sum of a(i) b(i), not narrowed.
[[nodiscard]] inline double VecDot(const float* a, const float* b, std::size_t n) {
    double sum = 0;
    for (std::size_t i = 0; i < n; ++i) sum += static_cast<double>(a[i]) * static_cast<double>(b[i]);
    return sum;
}

// Inverts the 2 by 2 matrix A and gives its determinant. 1e-20 is always added to the divisor, so that the inverse of a
// singular matrix is large and finite; the determinant comes without it.
[[nodiscard]] inline double Mat2Invert(float* inverse, const float* A) {
    const double a0 = static_cast<double>(A[0]);
    const double a1 = static_cast<double>(A[1]);
    const double a2 = static_cast<double>(A[2]);
    const double a3 = static_cast<double>(A[3]);
    const double determinant = a0 * a3 - a1 * a2;
    const double reciprocal = 1.0 / (determinant + 1e-20);
    inverse[0] = Narrow(reciprocal * a3);
    inverse[1] = Narrow(-reciprocal * a1);
    inverse[2] = Narrow(-reciprocal * a2);
    inverse[3] = Narrow(reciprocal * a0);
    return determinant;
}

}  // namespace kaldra
