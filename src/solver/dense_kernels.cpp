#include "solver/dense_kernels.h"

#include "platform/processor.h"

namespace kaldra {

const DenseKernels& ChosenDenseKernels() {
#if defined(__x86_64__)
    if (UsedProcessorLevel() == ProcessorLevel::Avx512) return denseKernelsAvx512;
    if (UsedProcessorLevel() == ProcessorLevel::Avx2) return denseKernelsAvx2;
#endif
    return denseKernelsPlain;
}

void SolveForwardInSquare(const double* square, double* w) {
    for (std::size_t k = 0; k < groupWidth; ++k) {
        for (std::size_t j = k + 1; j < groupWidth; ++j) w[j] -= square[k * groupWidth + j] * w[k];
    }
}

void SolveBackwardInSquare(const double* square, double* w) {
    for (std::size_t j = groupWidth; j-- > 1;) {
        for (std::size_t k = 0; k < j; ++k) w[k] -= square[k * groupWidth + j] * w[j];
    }
}

}  // namespace kaldra
