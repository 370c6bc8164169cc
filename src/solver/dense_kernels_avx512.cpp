// For processors with AVX-512.
#include <immintrin.h>

#include "solver/dense_kernels.h"

namespace kaldra {
namespace {

using Vec = __m512d;

constexpr std::size_t tileRows = 8;
constexpr std::size_t tileGroups = 3;

inline Vec Load(const double* p) { return _mm512_loadu_pd(p); }
inline void Store(double* p, Vec v) { _mm512_storeu_pd(p, v); }
inline Vec Broadcast(double value) { return _mm512_set1_pd(value); }
inline Vec Multiply(Vec a, Vec b) { return _mm512_mul_pd(a, b); }
inline Vec Reduce(Vec a, Vec b, Vec c) { return _mm512_fnmadd_pd(a, b, c); }

inline void AddLanes(double* to, unsigned mask, Vec v) {
    const auto lanes = static_cast<__mmask8>(mask);
    _mm512_mask_storeu_pd(to, lanes, _mm512_add_pd(_mm512_maskz_loadu_pd(lanes, to), v));
}

inline void Stream(double* to, Vec v) { _mm512_stream_pd(to, v); }
inline void EndStream() { _mm_sfence(); }

inline double Total(Vec v) {
    const __m256d fours = _mm256_add_pd(_mm512_castpd512_pd256(v), _mm512_extractf64x4_pd(v, 1));
    const __m128d pairs = _mm_add_pd(_mm256_castpd256_pd128(fours), _mm256_extractf128_pd(fours, 1));
    return _mm_cvtsd_f64(pairs) + _mm_cvtsd_f64(_mm_unpackhi_pd(pairs, pairs));
}

}  // namespace
}  // namespace kaldra

#define KALDRA_KERNELS denseKernelsAvx512
#include "solver/dense_kernels_body.h"
