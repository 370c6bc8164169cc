#include "element/shape_functions.h"

#include <algorithm>
#include <cmath>

#include "platform/narrow.h"

namespace kaldra {

// ---------------------------------------------------------------------------------------------------------------------
// Integration rules

void GetIntegrationRule(RuleTable& table, std::size_t n) {
    static const float g = Narrow(1.0 / std::sqrt(3.0));
    static const float a = Narrow(std::sqrt(15.0) * static_cast<double>(0.2F));
    constexpr float third = 1.0F / 3.0F;
    constexpr float sixth = 1.0F / 6.0F;
    constexpr float twoThirds = 2.0F / 3.0F;
    constexpr float w5 = 5.0F / 9.0F;
    constexpr float w8 = 8.0F / 9.0F;
    switch (n) {
        case 1:
            table[0] = {third, third, 1.0F, 0.5F};
            break;
        case 3:
            table[0] = {sixth, sixth, third, 0.5F};
            table[1] = {twoThirds, sixth, third, 0.5F};
            table[2] = {sixth, twoThirds, third, 0.5F};
            break;
        case 4:
            table[0] = {g, g, 1.0F, 1.0F};
            table[1] = {-g, g, 1.0F, 1.0F};
            table[2] = {-g, -g, 1.0F, 1.0F};
            table[3] = {g, -g, 1.0F, 1.0F};
            break;
        case 9:
            table[0] = {a, a, w5, w5};
            table[1] = {-a, a, w5, w5};
            table[2] = {-a, -a, w5, w5};
            table[3] = {a, -a, w5, w5};
            table[4] = {0, a, w8, w5};
            table[5] = {-a, 0, w5, w8};
            table[6] = {0, -a, w8, w5};
            table[7] = {a, 0, w5, w8};
            table[8] = {0, 0, w8, w8};
            break;
        default:
            break;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Interpolation functions

namespace {

using Values = std::array<double, slotCount>;

enum class Family { Quadrilateral, Triangle, Line };

Family FamilyOf(Slots nodes) {
    if (nodes[3] > 0) return Family::Quadrilateral;
    return nodes[2] > 0 ? Family::Triangle : Family::Line;
}

// Takes half of each side function in use off its two corners, in place: side 4 + i lies between corner i and the next.
void TakeFromCorners(float* f, Slots nodes, std::size_t corners, std::size_t sides) {
    const auto take = [f](std::size_t corner, std::size_t side) {
        f[corner] = Narrow(static_cast<double>(f[corner]) - 0.5 * static_cast<double>(f[side]));
    };
    for (std::size_t i = 0; i < sides; ++i) {
        const std::size_t side = 4 + i;
        if (nodes[side] <= 0) {
            f[side] = 0;
            continue;
        }
        take(i, side);
        take((i + 1) % corners, side);
    }
}

// Stores the functions of all slots and leaves those of the slots in use, corners corrected.
void StoreCorrected(const Values& full, float* f, Slots nodes, Family family) {
    std::ranges::transform(full, f, Narrow);
    switch (family) {
        case Family::Quadrilateral:
            return TakeFromCorners(f, nodes, 4, 4);
        case Family::Triangle:
            return TakeFromCorners(f, nodes, 3, 3);
        case Family::Line:
            return TakeFromCorners(f, nodes, 2, 1);
    }
}

Values FullFunctions(Family family, double r, double s) {
    const double t = 1 - r - s;
    switch (family) {
        case Family::Quadrilateral:
            return {(1 + r) * (1 + s) / 4,     (1 - r) * (1 + s) / 4,     (1 - r) * (1 - s) / 4,
                    (1 + r) * (1 - s) / 4,     (1 + s) * (1 - r * r) / 2, (1 - r) * (1 - s * s) / 2,
                    (1 - s) * (1 - r * r) / 2, (1 + r) * (1 - s * s) / 2};
        case Family::Triangle:
            return {t, r, s, 0, 4 * t * r, 4 * r * s, 4 * t * s, 0};
        case Family::Line:
            break;
    }
    return {(1 + r) / 2, (1 - r) / 2, 0, 0, 1 - r * r, 0, 0, 0};
}

Values FullDerivativesByR(Family family, double r, double s) {
    const double t = 1 - r - s;
    switch (family) {
        case Family::Quadrilateral:
            return {(1 + s) / 4,  -(1 + s) / 4,     -(1 - s) / 4, (1 - s) / 4,
                    -r * (1 + s), -(1 - s * s) / 2, -r * (1 - s), (1 - s * s) / 2};
        case Family::Triangle:
            return {-1, 1, 0, 0, 4 * (t - r), 4 * s, -4 * s, 0};
        case Family::Line:
            break;
    }
    return {0.5, -0.5, 0, 0, -2 * r, 0, 0, 0};
}

Values FullDerivativesByS(Family family, double r, double s) {
    const double t = 1 - r - s;
    switch (family) {
        case Family::Quadrilateral:
            return {(1 + r) / 4,     (1 - r) / 4,  -(1 - r) / 4,     -(1 + r) / 4,
                    (1 - r * r) / 2, -s * (1 - r), -(1 - r * r) / 2, -s * (1 + r)};
        case Family::Triangle:
            return {-1, 0, 1, 0, -4 * r, 4 * r, 4 * (t - s), 0};
        case Family::Line:
            break;
    }
    return {};
}

}  // namespace

void ShapeFunctions(SlotValues& N, float r, float s, Slots nodes) {
    const Family family = FamilyOf(nodes);
    StoreCorrected(FullFunctions(family, static_cast<double>(r), static_cast<double>(s)), N.data(), nodes, family);
}

void ShapeDerivatives(SlotGradients& dN, float r, float s, Slots nodes) {
    const Family family = FamilyOf(nodes);
    const double atR = static_cast<double>(r);
    const double atS = static_cast<double>(s);
    StoreCorrected(FullDerivativesByR(family, atR, atS), dN.data(), nodes, family);
    StoreCorrected(FullDerivativesByS(family, atR, atS), dN.data() + slotCount, nodes, family);
}

// ---------------------------------------------------------------------------------------------------------------------
// Mapping functions of infinite elements

void MappingFunctions1(SlotValues& M, float rLocal, float sLocal) {
    const double r = static_cast<double>(rLocal);
    const double s = static_cast<double>(sLocal);
    const double u = 1 - r;
    M.fill(0);
    M[1] = Narrow((s * s - (r * s + r + 1)) / u);
    M[2] = Narrow((r * s + s * s - (r + 1)) / u);
    M[4] = Narrow((1 + s) * (1 + r) / (2 * u));
    M[5] = Narrow(2 * (1 - s * s) / u);
    M[6] = Narrow((1 - s) * (1 + r) / (2 * u));
}

void MappingDerivatives1(SlotGradients& dM, float rLocal, float sLocal) {
    const double r = static_cast<double>(rLocal);
    const double s = static_cast<double>(sLocal);
    const double u = 1 - r;
    const double u2 = u * u;
    dM.fill(0);
    dM[1] = Narrow((s * s - s - 2) / u2);
    dM[2] = Narrow((s * s + s - 2) / u2);
    dM[4] = Narrow((1 + s) / u2);
    dM[5] = Narrow(2 * (1 - s * s) / u2);
    dM[6] = Narrow((1 - s) / u2);
    float* const byS = dM.data() + slotCount;
    byS[1] = Narrow((2 * s - r) / u);
    byS[2] = Narrow((r + 2 * s) / u);
    byS[4] = Narrow((1 + r) / (2 * u));
    byS[5] = Narrow(-4 * s / u);
    byS[6] = Narrow(-(1 + r) / (2 * u));
}

void MappingFunctions2(SlotValues& M, float rLocal, float sLocal) {
    const double r = static_cast<double>(rLocal);
    const double s = static_cast<double>(sLocal);
    const double w = (1 - r) * (1 - s);
    M.fill(0);
    M[2] = Narrow(-4 * (r + s + 1) / w);
    M[5] = Narrow(2 * (1 + s) / w);
    M[6] = Narrow(2 * (1 + r) / w);
}

void MappingDerivatives2(SlotGradients& dM, float rLocal, float sLocal) {
    const double r = static_cast<double>(rLocal);
    const double s = static_cast<double>(sLocal);
    const double w = (1 - r) * (1 - s);
    const double w2 = w * w;
    dM.fill(0);
    dM[2] = Narrow(4 * (s * s + s - 2) / w2);
    dM[5] = Narrow(2 * (1 - s * s) / w2);
    dM[6] = Narrow(4 * (1 - s) / w2);
    float* const byS = dM.data() + slotCount;
    byS[2] = Narrow(4 * (r * r + r - 2) / w2);
    byS[5] = Narrow(4 * (1 - r) / w2);
    byS[6] = Narrow(2 * (1 - r * r) / w2);
}

}  // namespace kaldra
