// The arithmetic of the factorisations, compiled for several processors and chosen when the program runs.
//
// A matrix is cut into groups of eight columns. A group holds its rows from `top` down to its last column, the eight
// values of a row side by side:
//
//     row top     [ . . . . . . . . ]
//       ...
//     row 8J      [ d u u u u u u u ]    the square on the diagonal; what lies below d is not read
//       ...
//     row 8J + 7  [ . . . . . . . d ]
//
// Three groups with the same top are one strip, which is worked on as a whole. With g the reduced and u the divided
// entries, and d the pivots,
//
//     g(i, j) = a(i, j) - sum over k < i of  u(k, i) g(k, j),     u(i, j) = g(i, j) / d(i),     d(j) = g(j, j).
//
// Every sum is taken over rising k with fused multiply-adds, one after another, for every processor and whatever the
// blocks; so all give the same bits. Rows from `pivots` on are no pivots: their g is the remainder that the elimination
// leaves (of the matrix of a front). Plain pointers and numbers only, as in batch_kernels.h.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kaldra {

inline constexpr std::size_t groupWidth = 8;
inline constexpr std::size_t groupsPerStrip = 3;
inline constexpr std::size_t groupsAtOnce = 4;  // in a solution
inline constexpr std::size_t stripWidth = groupWidth * groupsPerStrip;

// One group of columns: `rows` is its row `top`, a multiple of eight. Rows that are no pivots stand at `remainder`.
struct ColumnGroup {
    double* rows;
    std::int64_t top;
    double* remainder;

    [[nodiscard]] double* Row(std::int64_t k) const { return rows + (k - top) * 8; }
};

// A matrix of groups on the way to its factor.
struct DenseSystem {
    const ColumnGroup* groups;
    std::size_t groupCount;
    std::int64_t pivots;   // a multiple of eight
    double* reciprocal;    // 1 / d per pivot
    std::uint32_t* ready;  // groups that are factorised; null where one thread does all
    void (*wait)(const std::uint32_t* ready, std::uint32_t wanted);  // until *ready is at least `wanted`
};

struct DenseKernels {
    // Factorises the strip that begins with `group` and has `count` groups. `scratch` holds 8 values for each row of a
    // group. Strips in order; two threads may each take one where `ready` is given.
    void (*factorStrip)(const DenseSystem& system, std::size_t group, std::size_t count, double* scratch);
    // w(j) -= sum over k of u(k, j) y(k), for the eight columns of each of up to `groupsAtOnce` blocks of `rows` rows,
    // which begin at u[0], u[1] ...; w holds eight values per block.
    void (*forward)(const double* const* u, std::size_t blocks, std::size_t rows, const double* y, double* w);
    // x(k) -= sum over the columns of u(k, j) w(j), for the `rows` (a multiple of eight) of `blocks` blocks that lie
    // `stride` values apart.
    void (*backward)(const double* u, std::size_t rows, std::size_t blocks, std::size_t stride, const double* w,
                     double* x);
    // to(r, lane) += from(r, lane) for the lanes in `mask`; row r of either stands 8 r values behind its first. What
    // the other lanes of `to` would be is not touched.
    void (*add)(const double* from, std::size_t rows, unsigned mask, double* to);
    // Copies `count` values, a multiple of eight, to where they are not read again soon: past the caches. Both begin at
    // a multiple of 64 bytes.
    void (*stream)(const double* from, std::size_t count, double* to);
};

extern const DenseKernels denseKernelsPlain;
#if defined(__x86_64__)
extern const DenseKernels denseKernelsAvx2;
extern const DenseKernels denseKernelsAvx512;
#endif

// The kernels for this processor.
[[nodiscard]] const DenseKernels& ChosenDenseKernels();

// Reduces the right-hand side w of up to `groupsAtOnce` groups that stand side by side: by the `above` rows that they
// share, which begin at u[0], u[1] ... and belong to y, and then by each other.
void SolveForwardInGroups(const double* const* u, std::size_t count, std::size_t above, const double* y, double* w);

// Turns the eight values of w into the solution, within the square on the diagonal.
void SolveBackwardInSquare(const double* square, double* w);

}  // namespace kaldra
