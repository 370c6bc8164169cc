// For processors with AVX2 and FMA: a vector of eight is two registers.
#include <immintrin.h>

#include "solver/dense_kernels.h"

namespace kaldra {
namespace {

struct Vec {
    __m256d low, high;
};

constexpr std::size_t tileRows = 4;
constexpr std::size_t tileGroups = 1;

inline Vec Load(const double* p) { return {_mm256_loadu_pd(p), _mm256_loadu_pd(p + 4)}; }

inline void Store(double* p, Vec v) {
    _mm256_storeu_pd(p, v.low);
    _mm256_storeu_pd(p + 4, v.high);
}

inline Vec Broadcast(double value) { return {_mm256_set1_pd(value), _mm256_set1_pd(value)}; }

inline Vec Multiply(Vec a, Vec b) { return {_mm256_mul_pd(a.low, b.low), _mm256_mul_pd(a.high, b.high)}; }

inline Vec Reduce(Vec a, Vec b, Vec c) {
    return {_mm256_fnmadd_pd(a.low, b.low, c.low), _mm256_fnmadd_pd(a.high, b.high, c.high)};
}

// Four lanes of a mask, each all ones or zero.
inline __m256i LanesOf(unsigned mask) {
    const __m256i bits = _mm256_setr_epi64x(1, 2, 4, 8);
    return _mm256_cmpeq_epi64(_mm256_and_si256(_mm256_set1_epi64x(static_cast<int>(mask)), bits), bits);
}

inline void AddLanes(double* to, unsigned mask, Vec v) {
    const __m256i low = LanesOf(mask & 15U);
    const __m256i high = LanesOf(mask >> 4U);
    _mm256_maskstore_pd(to, low, _mm256_add_pd(_mm256_maskload_pd(to, low), v.low));
    _mm256_maskstore_pd(to + 4, high, _mm256_add_pd(_mm256_maskload_pd(to + 4, high), v.high));
}

inline void Stream(double* to, Vec v) {
    _mm256_stream_pd(to, v.low);
    _mm256_stream_pd(to + 4, v.high);
}

inline void EndStream() { _mm_sfence(); }

inline Vec Add(Vec a, Vec b) { return {_mm256_add_pd(a.low, b.low), _mm256_add_pd(a.high, b.high)}; }

// Totals of four vectors.
inline __m256d TotalsOfFour(const Vec* v) {
    const auto halves = [&](int r) { return _mm256_add_pd(v[r].low, v[r].high); };
    const auto quarters = [](__m256d a, __m256d b) {
        return _mm256_add_pd(_mm256_permute2f128_pd(a, b, 0x20), _mm256_permute2f128_pd(a, b, 0x31));
    };
    const __m256d first = quarters(halves(0), halves(2));
    const __m256d last = quarters(halves(1), halves(3));
    return _mm256_add_pd(_mm256_unpacklo_pd(first, last), _mm256_unpackhi_pd(first, last));
}

inline Vec Totals(const Vec* v) { return {TotalsOfFour(v), TotalsOfFour(v + 4)}; }

}  // namespace
}  // namespace kaldra

#define KALDRA_KERNELS denseKernelsAvx2
#include "solver/dense_kernels_body.h"
