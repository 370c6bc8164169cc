// The choice of the step at which a transient run begins, and of the files that it begins from.
#pragma once

#include <cstdint>

namespace kaldra {

// Begins the next run at `step`, from the default files of the step before. Gives 1 if all of them were found.
[[nodiscard]] int SetStartStep(std::int32_t step);

// Sets the initial condition files and their mode for the present startStep. Step 1 and a steady-state run need none.
// Gives 1 if all default files were found.
[[nodiscard]] int FindDefaultInitialFiles();

// Sets initialConditionMode from the files that exist: 0 no temperatures, 1 temperatures, 2 conductivities as well.
void RefreshInitialConditionMode();

}  // namespace kaldra
