#include "model/time_sequence.h"

#include "model/problem_model.h"

namespace kaldra {

static bool HasRecord(std::int32_t step) { return step >= 1 && step <= model.stepCount; }

float ElapsedTime(std::int32_t step) { return HasRecord(step) ? model.timeSteps[IndexOf(step)].elapsed : 0.0F; }

float StepIncrement(std::int32_t step) { return HasRecord(step) ? model.timeSteps[IndexOf(step)].increment : 0.0F; }

double InverseIncrement(std::int32_t step) {
    const double increment = static_cast<double>(StepIncrement(step));
    return increment == 0 ? 0.0 : 1.0 / increment;
}

}  // namespace kaldra
