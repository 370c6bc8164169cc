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

inline Vec Add(Vec a, Vec b) { return _mm512_add_pd(a, b); }

// The lower and the upper halves of two vectors, added: four lanes of each.
inline Vec AddHalves(Vec a, Vec b) { return Add(_mm512_shuffle_f64x2(a, b, 0x44), _mm512_shuffle_f64x2(a, b, 0xee)); }

// The same by quarters: two lanes of each of four vectors.
inline Vec AddQuarters(Vec a, Vec b) { return Add(_mm512_shuffle_f64x2(a, b, 0x88), _mm512_shuffle_f64x2(a, b, 0xdd)); }

inline Vec Totals(const Vec* v) {
    const Vec first = AddQuarters(AddHalves(v[0], v[1]), AddHalves(v[2], v[3]));
    const Vec last = AddQuarters(AddHalves(v[4], v[5]), AddHalves(v[6], v[7]));
    const Vec mixed = Add(_mm512_unpacklo_pd(first, last), _mm512_unpackhi_pd(first, last));
    return _mm512_permutexvar_pd(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), mixed);
}

}  // namespace
}  // namespace kaldra

#define KALDRA_KERNELS denseKernelsAvx512
#include "solver/dense_kernels_body.h"
