// For any processor. One without a fused multiply-add computes it in software: the same bits, slowly.
#include "solver/dense_kernels.h"

namespace kaldra {
namespace {

struct Vec {
    double lane[8];
};

constexpr std::size_t tileRows = 4;
constexpr std::size_t tileGroups = 1;

inline Vec Load(const double* p) {
    Vec v;
    __builtin_memcpy(v.lane, p, sizeof v.lane);
    return v;
}

inline void Store(double* p, const Vec& v) { __builtin_memcpy(p, v.lane, sizeof v.lane); }

inline Vec Broadcast(double value) { return {{value, value, value, value, value, value, value, value}}; }

inline Vec Multiply(const Vec& a, const Vec& b) {
    Vec r;
    for (int i = 0; i < 8; ++i) r.lane[i] = a.lane[i] * b.lane[i];
    return r;
}

inline Vec Reduce(const Vec& a, const Vec& b, const Vec& c) {
    Vec r;
    for (int i = 0; i < 8; ++i) r.lane[i] = __builtin_fma(-a.lane[i], b.lane[i], c.lane[i]);
    return r;
}

inline void AddLanes(double* to, unsigned mask, const Vec& v) {
    for (unsigned i = 0; i < 8; ++i) {
        if ((mask >> i & 1U) != 0) to[i] += v.lane[i];
    }
}

inline void Stream(double* to, const Vec& v) { Store(to, v); }
inline void EndStream() {}

inline Vec Add(const Vec& a, const Vec& b) {
    Vec r;
    for (int i = 0; i < 8; ++i) r.lane[i] = a.lane[i] + b.lane[i];
    return r;
}

inline Vec Totals(const Vec* v) {
    Vec r;
    for (int i = 0; i < 8; ++i) {
        const double* const lane = v[i].lane;
        r.lane[i] = ((lane[0] + lane[4]) + (lane[2] + lane[6])) + ((lane[1] + lane[5]) + (lane[3] + lane[7]));
    }
    return r;
}

}  // namespace
}  // namespace kaldra

#define KALDRA_KERNELS denseKernelsPlain
#include "solver/dense_kernels_body.h"
