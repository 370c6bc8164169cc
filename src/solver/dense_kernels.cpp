#include "solver/dense_kernels.h"

#include <algorithm>
#include <array>

#include "platform/processor.h"

namespace kaldra {

const DenseKernels& ChosenDenseKernels() {
#if defined(__x86_64__)
    if (UsedProcessorLevel() == ProcessorLevel::Avx512) return denseKernelsAvx512;
    if (UsedProcessorLevel() == ProcessorLevel::Avx2) return denseKernelsAvx2;
#endif
    return denseKernelsPlain;
}

static void SolveForwardInSquare(const double* square, double* w) {
    std::array<double, groupWidth> v;  // in registers, as w may be anywhere
    std::copy_n(w, groupWidth, v.begin());
#pragma GCC unroll 8
    for (std::size_t k = 0; k < groupWidth; ++k) {
#pragma GCC unroll 8
        for (std::size_t j = k + 1; j < groupWidth; ++j) v[j] -= square[k * groupWidth + j] * v[k];
    }
    std::copy_n(v.begin(), groupWidth, w);
}

void SolveForwardInGroups(const double* const* u, std::size_t count, std::size_t above, const double* y, double* w) {
    const DenseKernels& kernels = ChosenDenseKernels();
    kernels.forward(u, count, above, y, w);
    std::array<const double*, groupsAtOnce> below{};
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t row = above + i * groupWidth;
        double* const own = w + i * groupWidth;
        SolveForwardInSquare(u[i] + row * groupWidth, own);
        for (std::size_t j = i + 1; j < count; ++j) below[j] = u[j] + row * groupWidth;
        kernels.forward(below.data() + i + 1, count - i - 1, groupWidth, own, own + groupWidth);
    }
}

void SolveBackwardInSquare(const double* square, double* w) {
    std::array<double, groupWidth> v;
    std::copy_n(w, groupWidth, v.begin());
#pragma GCC unroll 8
    for (std::size_t j = groupWidth; j-- > 1;) {
#pragma GCC unroll 8
        for (std::size_t k = 0; k < j; ++k) v[k] -= square[k * groupWidth + j] * v[j];
    }
    std::copy_n(v.begin(), groupWidth, w);
}

}  // namespace kaldra
