// The batch kernels in vectors of eight lanes; included once per processor, with KALDRA_KERNELS naming the table.
//
// NOLINTBEGIN: no include guard, on purpose.
#if defined(__AVX2__)
#include <immintrin.h>
#endif

#include "element/batch_kernels.h"

namespace kaldra {
namespace {

using Real8 = float __attribute__((vector_size(32)));
using Wide8 = double __attribute__((vector_size(64)));
using Mask8 = std::int32_t __attribute__((vector_size(32)));
using WideMask8 = std::int64_t __attribute__((vector_size(64)));

constexpr std::size_t lanes = 8;
constexpr std::size_t mostSlots = 8;
constexpr std::size_t mostPoints = 9;

#define KALDRA_INLINE inline __attribute__((always_inline))

// ---------------------------------------------------------------------------------------------------------------------
// Lanes

#if defined(__AVX512F__)
KALDRA_INLINE Wide8 Widen(Real8 v) { return reinterpret_cast<Wide8>(_mm512_cvtps_pd(reinterpret_cast<__m256>(v))); }
#else
KALDRA_INLINE Wide8 Widen(Real8 v) { return __builtin_convertvector(v, Wide8); }
#endif
KALDRA_INLINE Real8 Narrow8(Wide8 v) { return __builtin_convertvector(v, Real8); }
KALDRA_INLINE Real8 All(float v) { return Real8{v, v, v, v, v, v, v, v}; }
KALDRA_INLINE Wide8 AllWide(double v) { return Wide8{v, v, v, v, v, v, v, v}; }

// Bit i is lane i.
KALDRA_INLINE unsigned BitsOf(Mask8 mask) {
#if defined(__AVX2__)
    return static_cast<unsigned>(_mm256_movemask_ps(reinterpret_cast<__m256>(mask)));
#else
    unsigned bits = 0;
    for (std::size_t lane = 0; lane < lanes; ++lane) bits |= (mask[lane] != 0 ? 1U : 0U) << lane;
    return bits;
#endif
}

KALDRA_INLINE bool Any(Mask8 m) { return BitsOf(m) != 0; }

KALDRA_INLINE Real8 LoadReal(const float* p) {
    Real8 v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
}

KALDRA_INLINE void StoreReal(float* p, Real8 v) { __builtin_memcpy(p, &v, sizeof v); }

// One value per lane, from `base + at[lane]`.
template <class Index>
KALDRA_INLINE Real8 Collect(const float* base, const Index* at) {
    return Real8{base[at[0]], base[at[1]], base[at[2]], base[at[3]],
                 base[at[4]], base[at[5]], base[at[6]], base[at[7]]};
}

KALDRA_INLINE Wide8 Magnitude(Wide8 v) {
    const WideMask8 noSign = WideMask8{} + 0x7fffffffffffffffLL;
    return reinterpret_cast<Wide8>(reinterpret_cast<WideMask8>(v) & noSign);
}

// ---------------------------------------------------------------------------------------------------------------------
// Functions

// The interval of each lane, as vectors.
struct Intervals8 {
    Wide8 a, b, half, twoByCube, oneBySquare, oneByNarrowedSquare, ya, ma, yb, mb;
};

KALDRA_INLINE std::size_t SearchInterval(const LaneFunction& f, float x) {
    std::size_t low = 0;
    std::size_t count = f.intervals;  // the interval is one of low .. low + count - 1
    while (count > 1) {
        const std::size_t upper = count / 2;
        low += f.x[low + upper] <= x ? upper : 0;
        count -= upper;
    }
    return low;
}

// The lanes whose x lies in the interval.
KALDRA_INLINE Mask8 LanesWithin(const LaneFunction& f, Real8 x, std::size_t interval) {
    const Mask8 isLast = Mask8{} - (interval + 1 == f.intervals ? 1 : 0);
    return (x >= All(f.x[interval])) & ((x < All(f.x[interval + 1])) | isLast);
}

KALDRA_INLINE Intervals8 AllInInterval(const LaneInterval& i) {
    return {AllWide(i.a),         AllWide(i.b),           AllWide(i.half),
            AllWide(i.twoByCube), AllWide(i.oneBySquare), AllWide(i.oneByNarrowedSquare),
            AllWide(i.ya),        AllWide(i.ma),          AllWide(i.yb),
            AllWide(i.mb)};
}

KALDRA_INLINE void PutInInterval(Intervals8& at, WideMask8 which, const LaneInterval& i) {
    at.a = which ? AllWide(i.a) : at.a;
    at.b = which ? AllWide(i.b) : at.b;
    at.half = which ? AllWide(i.half) : at.half;
    at.twoByCube = which ? AllWide(i.twoByCube) : at.twoByCube;
    at.oneBySquare = which ? AllWide(i.oneBySquare) : at.oneBySquare;
    at.oneByNarrowedSquare = which ? AllWide(i.oneByNarrowedSquare) : at.oneByNarrowedSquare;
    at.ya = which ? AllWide(i.ya) : at.ya;
    at.ma = which ? AllWide(i.ma) : at.ma;
    at.yb = which ? AllWide(i.yb) : at.yb;
    at.mb = which ? AllWide(i.mb) : at.mb;
}

#if defined(__AVX512F__)
// The intervals of a function that has few: the number of inner points that x has reached, and by it the columns.
KALDRA_INLINE Intervals8 PickIntervals(const LaneFunction& f, Real8 x) {
    Mask8 reached{};
    for (std::size_t i = 1; i < f.intervals; ++i) reached -= x >= All(f.x[i]);
    const __m512i interval = _mm512_cvtepi32_epi64(reinterpret_cast<__m256i>(reached));
    const bool inOneVector = f.intervals <= lanes;
    const auto pick = [&](std::size_t member) {
        const double* const column = f.columns + member * fewIntervals;
        const __m512d low = _mm512_loadu_pd(column);
        return reinterpret_cast<Wide8>(inOneVector
                                           ? _mm512_permutexvar_pd(interval, low)
                                           : _mm512_permutex2var_pd(low, interval, _mm512_loadu_pd(column + lanes)));
    };
    return {pick(0), pick(1), pick(2), pick(3), pick(4), pick(5), pick(6), pick(7), pick(8), pick(9)};
}
#endif

// Sets x back into the range of the function, and finds the intervals. `hint` is the interval of the last call: mostly
// all lanes lie in it, and otherwise in few.
KALDRA_INLINE Intervals8 FindIntervals(const LaneFunction& f, Real8& x, std::size_t& hint) {
    const float first = f.x[0];
    const float last = f.x[f.intervals];
    x = x <= All(first) ? All(first) : x;
    x = All(last) <= x ? All(last) : x;
#if defined(__AVX512F__)
    if (f.columns != nullptr) return PickIntervals(f, x);
#endif
    unsigned missing = BitsOf(~LanesWithin(f, x, hint));
    Intervals8 at = AllInInterval(f.interval[hint]);
    float values[lanes];
    if (missing != 0) StoreReal(values, x);
    while (missing != 0) {
        const auto lane = static_cast<unsigned>(__builtin_ctz(missing));
        hint = SearchInterval(f, values[lane]);
        const Mask8 which = LanesWithin(f, x, hint);
        PutInInterval(at, __builtin_convertvector(which, WideMask8), f.interval[hint]);
        missing &= ~(BitsOf(which) | 1U << lane);  // what is no number lies in no interval
    }
    return at;
}

KALDRA_INLINE Real8 ValueOf(const LaneFunction& f, Real8 x, std::size_t& hint) {
    if (f.constant) return Narrow8(AllWide(f.value));
    const Intervals8 i = FindIntervals(f, x, hint);
    const Wide8 at = Widen(x);
    const Wide8 u = Widen(Narrow8(at - i.a));
    const Wide8 v = Widen(Narrow8(at - i.b));
    const Wide8 Pa = i.twoByCube * (i.half + u) * (v * v);
    const Wide8 Qa = i.oneBySquare * u * (v * v);
    const Wide8 Pb = -i.twoByCube * (v - i.half) * (u * u);
    const Wide8 Qb = i.oneBySquare * v * (u * u);
    return Narrow8((Qa * i.ma + Pa * i.ya) + (Qb * i.mb + Pb * i.yb));
}

KALDRA_INLINE Real8 SlopeOf(const LaneFunction& f, Real8 x, std::size_t& hint) {
    if (f.intervals == 0) return Real8{};
    const Intervals8 i = FindIntervals(f, x, hint);
    const Wide8 at = Widen(x);
    const Wide8 u = Widen(Narrow8(at - i.a));
    const Wide8 v = Widen(Narrow8(at - i.b));
    const Wide8 two = AllWide(2);
    const Wide8 dPa = i.twoByCube * (two * (i.half + u) + v) * v;
    const Wide8 dQa = i.oneByNarrowedSquare * (two * u + v) * v;
    const Wide8 dPb = -i.twoByCube * (two * (v - i.half) + u) * u;
    const Wide8 dQb = i.oneByNarrowedSquare * (two * v + u) * u;
    return Narrow8((dQa * i.ma + dPa * i.ya) + (dQb * i.mb + dPb * i.yb));
}

// ---------------------------------------------------------------------------------------------------------------------
// Values at the points

// Nodal temperatures of a batch, widened: at the slots, one vector each.
struct SlotTemperatures8 {
    Wide8 present[mostSlots];
    Wide8 old[mostSlots];
};

template <std::size_t M, class Batch>
KALDRA_INLINE std::size_t SlotsOf(const Batch& batch) {
    return M != 0 ? M : batch.slots;
}

template <std::size_t M>
KALDRA_INLINE void CollectTemperatures(const LaneTables& tables, const LaneBatch& batch, SlotTemperatures8& at) {
    const std::size_t m = SlotsOf<M>(batch);
    for (std::size_t slot = 0; slot < m; ++slot) {
        const std::int32_t* const node = batch.nodes + slot * lanes;
        std::size_t place[lanes];
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            place[lane] = static_cast<std::size_t>(node[lane]) * tables.nodeStride;
        }
        at.present[slot] = Widen(Collect(tables.temperature, place));
        at.old[slot] = Widen(Collect(tables.temperature + 1, place));
    }
}

template <std::size_t M>
KALDRA_INLINE Wide8 AtPoint(const LaneBatch& batch, const Wide8* slotValues, std::size_t point) {
    const std::size_t m = SlotsOf<M>(batch);
    Wide8 sum{};
    for (std::size_t slot = 0; slot < m; ++slot) {
        sum += AllWide(static_cast<double>(batch.N[point][slot])) * slotValues[slot];
    }
    return sum;
}

enum Run : std::size_t { runConductivity, runTemperature, runWater, runSlope, runCapacity };

KALDRA_INLINE float* RecordAt(const LaneBatch& batch, Run run, std::size_t point) {
    return batch.record + (run * batch.points + point) * lanes;
}

// Stores a value, and gives whether it is another one than before.
KALDRA_INLINE bool Replace(float* at, Real8 v) {
    const bool differs = Any(reinterpret_cast<Mask8>(v) != reinterpret_cast<Mask8>(LoadReal(at)));
    StoreReal(at, v);
    return differs;
}

// The lanes whose point is switched on.
KALDRA_INLINE Mask8 SwitchedLanes(const std::uint8_t* phase) {
    std::uint64_t states = 0;
    __builtin_memcpy(&states, phase, sizeof states);
    if (states == 0) return Mask8{};
    Mask8 on;
    for (std::size_t lane = 0; lane < lanes; ++lane) on[lane] = phase[lane] != 0 ? -1 : 0;
    return on;
}

KALDRA_INLINE Real8 HeldToOne(Real8 v) {
    const Real8 one = All(1);
    return v < Real8{} ? Real8{} : one < v ? one : v;
}

// The slope of the water content that these lanes ask for; 0 where they take no latent heat.
KALDRA_INLINE Real8 WaterSlope8(const LaneSettings& set, Real8 present, Real8 old, Real8 presentPart, Real8 oldPart,
                                Mask8 takes, LaneHints& hints) {
    const Wide8 difference = Widen(present) - Widen(old);
    const Wide8 magnitude = (Magnitude(Widen(old)) + Magnitude(Widen(present))) * AllWide(0.5);
    const auto far = __builtin_convertvector(Magnitude(difference) / magnitude > AllWide(0.01), Mask8);
    const Real8 secant = Narrow8((Widen(presentPart) - Widen(oldPart)) / difference);
    Real8 slope = secant;
    if (Any(takes & ~far)) {
        const Real8 mean = Narrow8((Widen(old) + Widen(present)) * AllWide(0.5));
        const Real8 tangent = SlopeOf(set.water, mean, hints.water);
        slope = far ? secant : tangent;
    }
    return takes ? slope : Real8{};
}

// Heat capacity at one point of every lane, recorded; gives whether it has changed.
KALDRA_INLINE bool EvaluateCapacity(const LaneBatch& batch, const LaneSettings& set, std::size_t point, Real8 present,
                                    Real8 old, LaneHints& hints) {
    const Real8 presentPart = HeldToOne(ValueOf(set.water, present, hints.water));
    float* const oldWater = batch.oldWater + point * lanes;
    if (set.stepIsNew) StoreReal(oldWater, HeldToOne(ValueOf(set.water, old, hints.oldWater)));
    Mask8 takes = present != old;
    if (!set.allPointsOpen) takes &= SwitchedLanes(batch.phase + point * lanes);
    float* const floor = batch.floor + point * lanes;
    Real8 slope = LoadReal(floor);
    if (Any(takes)) {
        const Real8 asked = WaterSlope8(set, present, old, presentPart, LoadReal(oldWater), takes, hints);
        slope = asked > slope ? asked : slope;
        StoreReal(floor, slope);
    }

    const Wide8 latentOfSlope =
        AllWide(static_cast<double>(set.latentHeat)) * Widen(slope) * AllWide(static_cast<double>(set.waterContent));
    const auto counts = __builtin_convertvector(slope > All(1e-10F), WideMask8);
    const Wide8 latent = counts ? latentOfSlope : Wide8{};
    const Real8 dry = old <= All(set.freezingPoint) ? All(set.frozenHeatCapacity) : All(set.unfrozenHeatCapacity);
    StoreReal(RecordAt(batch, runWater, point), presentPart * All(set.waterContent));
    StoreReal(RecordAt(batch, runSlope, point), slope * All(set.waterContent));
    return Replace(RecordAt(batch, runCapacity, point), Narrow8(latent + Widen(dry)));
}

template <std::size_t M>
bool EvaluateBatch(const LaneTables& tables, const LaneBatch& batch, const LaneSettings& set, LaneHints& hints) {
    SlotTemperatures8 nodal;
    CollectTemperatures<M>(tables, batch, nodal);
    bool changed = false;
    for (std::size_t point = 0; point < batch.points; ++point) {
        const Real8 present = Narrow8(AtPoint<M>(batch, nodal.present, point));
        Wide8 oldWide{};
        if (set.transient) oldWide = AtPoint<M>(batch, nodal.old, point);
        if (!set.conductivityHolds) {
            Real8 at = present;
            if (set.transient) at = Narrow8((oldWide + Widen(present)) * AllWide(0.5));
            const Real8 k = ValueOf(set.conductivity, at, hints.conductivity);
            changed |= Replace(RecordAt(batch, runConductivity, point), k);
        }
        StoreReal(RecordAt(batch, runTemperature, point), present);
        if (set.transient) changed |= EvaluateCapacity(batch, set, point, present, Narrow8(oldWide), hints);
    }
    return changed;
}

// ---------------------------------------------------------------------------------------------------------------------
// Geometry

// Adds a product to a sum that is narrowed after every term.
KALDRA_INLINE Real8 WithTerm(Real8 sum, Real8 a, Wide8 b) { return Narrow8(Widen(sum) + Widen(a) * b); }

struct Mapping8 {
    Real8 inverse[4];
    Real8 determinant;
};

// The Jacobian of one point, inverted.
template <std::size_t M>
KALDRA_INLINE Mapping8 MapPoint(const LaneGeometry& batch, std::size_t point) {
    const std::size_t m = SlotsOf<M>(batch);
    Real8 J[4]{};
    for (std::size_t j = 0; j < m; ++j) {
        const Wide8 x = Widen(LoadReal(batch.xy + 2 * j * lanes));
        const Wide8 y = Widen(LoadReal(batch.xy + (2 * j + 1) * lanes));
        const Real8 byR = All(batch.dN[point][0][j]);
        const Real8 byS = All(batch.dN[point][1][j]);
        J[0] = WithTerm(J[0], byR, x);
        J[1] = WithTerm(J[1], byR, y);
        J[2] = WithTerm(J[2], byS, x);
        J[3] = WithTerm(J[3], byS, y);
    }
    const Wide8 determinant = Widen(J[0]) * Widen(J[3]) - Widen(J[1]) * Widen(J[2]);
    const Wide8 reciprocal = AllWide(1) / (determinant + AllWide(1e-20));
    return {{Narrow8(reciprocal * Widen(J[3])), Narrow8(-reciprocal * Widen(J[1])), Narrow8(-reciprocal * Widen(J[2])),
             Narrow8(reciprocal * Widen(J[0]))},
            Narrow8(determinant)};
}

template <std::size_t M>
KALDRA_INLINE Real8 DepthOf(const LaneGeometry& batch, std::size_t point) {
    const Real8 thickness = LoadReal(batch.thickness);
    if (!batch.axisymmetric) return thickness;
    Wide8 radius{};
    for (std::size_t j = 0; j < SlotsOf<M>(batch); ++j) {
        radius += Widen(All(batch.N[point][j])) * Widen(LoadReal(batch.xy + 2 * j * lanes));
    }
    return Narrow8(radius * Widen(thickness));
}

template <std::size_t M>
unsigned MapBatch(const LaneGeometry& batch, float* shapes) {
    const std::size_t m = SlotsOf<M>(batch);
    Mask8 sound = Mask8{} - 1;
    for (std::size_t point = 0; point < batch.points; ++point) {
        const Mapping8 at = MapPoint<M>(batch, point);
        sound &= at.determinant > Real8{};
        float* const shape = shapes + point * (2 * m + 2) * lanes;
        for (std::size_t j = 0; j < m; ++j) {
            const Wide8 byR = AllWide(static_cast<double>(batch.dN[point][0][j]));
            const Wide8 byS = AllWide(static_cast<double>(batch.dN[point][1][j]));
            StoreReal(shape + j * lanes, WithTerm(WithTerm(Real8{}, at.inverse[0], byR), at.inverse[1], byS));
            StoreReal(shape + (m + j) * lanes, WithTerm(WithTerm(Real8{}, at.inverse[2], byR), at.inverse[3], byS));
        }
        const float* const weights = batch.weights[point];
        const Wide8 weight =
            Widen(at.determinant) * AllWide(static_cast<double>(weights[0])) * AllWide(static_cast<double>(weights[1]));
        StoreReal(shape + 2 * m * lanes, Narrow8(weight));
        StoreReal(shape + (2 * m + 1) * lanes, DepthOf<M>(batch, point));
    }
    return BitsOf(~sound);
}

// ---------------------------------------------------------------------------------------------------------------------
// Matrices

template <std::size_t M>
KALDRA_INLINE void AddConduction8(const LaneBatch& batch, const LaneSettings& set, const float* shape, Real8 k,
                                  Real8* K) {
    const std::size_t m = SlotsOf<M>(batch);
    const Real8 k2 = All(set.conductivityRatio) * k;
    const Real8 weight = LoadReal(shape + 2 * m * lanes);
    const Real8 depth = LoadReal(shape + (2 * m + 1) * lanes);
    Real8 flux1[mostSlots];
    Wide8 flux2[mostSlots];
    for (std::size_t j = 0; j < m; ++j) {
        flux1[j] = k * LoadReal(shape + j * lanes);
        flux2[j] = Widen(k2 * LoadReal(shape + (m + j) * lanes));
    }
    for (std::size_t i = 0; i < m; ++i) {
        const Real8 byX = LoadReal(shape + i * lanes);
        const Wide8 byY = Widen(LoadReal(shape + (m + i) * lanes));
        for (std::size_t j = 0; j < m; ++j) {
            const Real8 product = Narrow8(Widen(byX * flux1[j]) + byY * flux2[j]);
            K[i * m + j] += product * weight * depth;
        }
    }
}

// Adds the capacity of one point to the upper triangle of Cap.
template <std::size_t M>
KALDRA_INLINE void AddCapacity8(const LaneBatch& batch, std::size_t point, const float* shape, Real8 capacity,
                                Real8* Cap) {
    const std::size_t m = SlotsOf<M>(batch);
    const Real8 weight = LoadReal(shape + 2 * m * lanes);
    const Real8 depth = LoadReal(shape + (2 * m + 1) * lanes);
    const float* const N = batch.N[point];
    for (std::size_t i = 0; i < m; ++i) {
        for (std::size_t j = i; j < m; ++j) Cap[i * m + j] += All(N[i] * N[j]) * weight * depth * capacity;
    }
}

template <std::size_t M>
KALDRA_INLINE const float* ShapeOf(const LaneBatch& batch, std::size_t point) {
    return batch.shapes + point * (2 * SlotsOf<M>(batch) + 2) * lanes;
}

template <std::size_t M>
KALDRA_INLINE void SumCapacity(const LaneBatch& batch, Real8* Cap) {
    for (std::size_t point = 0; point < batch.points; ++point) {
        const Real8 capacity = LoadReal(RecordAt(batch, runCapacity, point));
        AddCapacity8<M>(batch, point, ShapeOf<M>(batch, point), capacity, Cap);
    }
}

// Stores Cap T old.
template <std::size_t M>
KALDRA_INLINE void StoreLoads(const LaneTables& tables, const LaneBatch& batch, const Real8* Cap, float* loads) {
    const std::size_t m = SlotsOf<M>(batch);
    SlotTemperatures8 nodal;
    CollectTemperatures<M>(tables, batch, nodal);
    for (std::size_t i = 0; i < m; ++i) {
        Real8 load{};
        for (std::size_t j = 0; j < m; ++j) {
            load = Narrow8(Widen(load) + Widen(Cap[i < j ? i * m + j : j * m + i]) * nodal.old[j]);
        }
        StoreReal(loads + i * lanes, load);
    }
}

template <std::size_t M>
void FormBatch(const LaneTables& tables, const LaneBatch& batch, const LaneSettings& set, float* entries,
               float* loads) {
    const std::size_t m = SlotsOf<M>(batch);
    Real8 K[M != 0 ? M * M : mostSlots * mostSlots]{};
    for (std::size_t point = 0; point < batch.points; ++point) {
        const Real8 k = LoadReal(RecordAt(batch, runConductivity, point));
        AddConduction8<M>(batch, set, ShapeOf<M>(batch, point), k, K);
    }
    if (set.transient) {
        Real8 Cap[M != 0 ? M * M : mostSlots * mostSlots]{};
        SumCapacity<M>(batch, Cap);
        StoreLoads<M>(tables, batch, Cap, loads);
        const Real8 increment = All(set.increment);
        for (std::size_t i = 0; i < m; ++i) {
            for (std::size_t j = 0; j < m; ++j) {
                K[i * m + j] = K[i * m + j] * increment + Cap[i < j ? i * m + j : j * m + i];
            }
        }
    }
    for (std::size_t entry = 0; entry < m * m; ++entry) StoreReal(entries + entry * lanes, K[entry]);
}

template <std::size_t M>
void LoadBatch(const LaneTables& tables, const LaneBatch& batch, float* loads) {
    Real8 Cap[M != 0 ? M * M : mostSlots * mostSlots]{};
    SumCapacity<M>(batch, Cap);
    StoreLoads<M>(tables, batch, Cap, loads);
}

// ---------------------------------------------------------------------------------------------------------------------
// Crossings of the freezing point

template <std::size_t M>
bool CrossBatch(const LaneTables& tables, const LaneBatch& batch, float freezingPoint, float* now,
                std::uint16_t* crossed) {
    SlotTemperatures8 nodal;
    CollectTemperatures<M>(tables, batch, nodal);
    const Real8 freezing = All(freezingPoint);
    bool any = false;
    for (std::size_t point = 0; point < batch.points; ++point) {
        const Real8 present = Narrow8(AtPoint<M>(batch, nodal.present, point));
        const Real8 before = Narrow8(AtPoint<M>(batch, nodal.old, point));
        const Mask8 thaws = (present > freezing) & (before < freezing);
        const Mask8 freezes = (present < freezing) & (before > freezing);
        crossed[point] = 0;
        if (!Any(thaws | freezes)) continue;
        any = true;
        StoreReal(now + point * lanes, present);
        crossed[point] = static_cast<std::uint16_t>(BitsOf(thaws) | BitsOf(freezes) << 8U);
    }
    return any;
}

// ---------------------------------------------------------------------------------------------------------------------
// By the number of slots

#define KALDRA_BY_SLOTS(procedure, ...)       \
    switch (batch.slots) {                    \
        case 3:                               \
            return procedure<3>(__VA_ARGS__); \
        case 4:                               \
            return procedure<4>(__VA_ARGS__); \
        case 8:                               \
            return procedure<8>(__VA_ARGS__); \
        default:                              \
            return procedure<0>(__VA_ARGS__); \
    }

unsigned Map(const LaneGeometry& batch, float* shapes) { KALDRA_BY_SLOTS(MapBatch, batch, shapes) }

bool Evaluate(const LaneTables& tables, const LaneBatch& batch, const LaneSettings& settings, LaneHints& hints) {
    KALDRA_BY_SLOTS(EvaluateBatch, tables, batch, settings, hints)
}

void Form(const LaneTables& tables, const LaneBatch& batch, const LaneSettings& settings, float* entries,
          float* loads) {
    KALDRA_BY_SLOTS(FormBatch, tables, batch, settings, entries, loads)
}

void Load(const LaneTables& tables, const LaneBatch& batch, float* loads) {
    KALDRA_BY_SLOTS(LoadBatch, tables, batch, loads)
}

bool Cross(const LaneTables& tables, const LaneBatch& batch, float freezingPoint, float* now, std::uint16_t* crossed) {
    KALDRA_BY_SLOTS(CrossBatch, tables, batch, freezingPoint, now, crossed)
}

}  // namespace

const BatchKernels KALDRA_KERNELS{Map, Evaluate, Form, Load, Cross};

}  // namespace kaldra
// NOLINTEND
