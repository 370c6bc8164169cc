// A function of the model as the kernels that work on several elements at a time read it: what its intervals take is
// computed once. Plain numbers only, as batch_kernels.h asks.
#pragma once

#include <cstddef>

namespace kaldra {

// One interval of a function, with what its value and its slope take from it.
struct LaneInterval {
    double a, b;                 // its ends
    double half;                 // h / 2
    double twoByCube;            // 2 / h^3
    double oneBySquare;          // 1 / h^2
    double oneByNarrowedSquare;  // 1 / h^2 with h^2 narrowed, for the slope
    double ya, ma, yb, mb;       // values and slopes at the ends
};

// A function of so few intervals has them as columns, too.
inline constexpr std::size_t fewIntervals = 16;
inline constexpr std::size_t intervalColumns = sizeof(LaneInterval) / sizeof(double);

struct LaneFunction {
    std::size_t intervals = 0;
    const float* x = nullptr;  // intervals + 1 points
    const LaneInterval* interval = nullptr;
    const double* columns = nullptr;  // [member of LaneInterval][fewIntervals]; none for more intervals
    bool constant = true;             // it is `value` everywhere
    double value = 0;
};

}  // namespace kaldra
