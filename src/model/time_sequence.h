// The time sequence by step number. Step 0, before the first step and in a steady-state run, has no record.
#pragma once

#include <cstdint>

namespace kaldra {

// Elapsed time at the end of a step; 0 for step 0.
[[nodiscard]] float ElapsedTime(std::int32_t step);

// Length of a step; 0 for step 0.
[[nodiscard]] float StepIncrement(std::int32_t step);

// 1 / increment, which counts as 0 for a step of length 0.
[[nodiscard]] double InverseIncrement(std::int32_t step);

}  // namespace kaldra
