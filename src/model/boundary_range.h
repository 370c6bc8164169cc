// Boundary functions that a run reads outside their points, where they keep their end value.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kaldra {

// A boundary function, and the arguments outside its points at which the run reads it.
struct OutsideRange {
    std::int32_t function = 0;
    std::int32_t steps = 0;               // with such an argument
    std::int32_t firstStep = 0;           // of them
    float lowest = 0, highest = 0;        // of these arguments
    float firstPoint = 0, lastPoint = 0;  // x of the function
};

// Those of the model for a run that begins at `startStep`, in rising number; a steady-state run reads at time 0. Only
// functions count that act on a node of an active element, or on an edge. Changes nothing.
[[nodiscard]] std::vector<OutsideRange> BoundaryFunctionsOutside(std::int32_t startStep);

// The sentence that tells of it and what to do.
[[nodiscard]] std::string OutsideRangeText(const OutsideRange& outside);

}  // namespace kaldra
