// Where a value leaves double precision: the one spelling of a narrowing to f32.
//
// Formulas are evaluated in f64 and narrowed when they are stored. The result files rest on where that happens, so each
// place is written out.
#pragma once

#include <cfloat>

namespace kaldra {

static_assert(FLT_EVAL_METHOD == 0, "an f32 expression must not be evaluated wider than it is written");

[[nodiscard]] inline float Narrow(double value) { return static_cast<float>(value); }

}  // namespace kaldra
