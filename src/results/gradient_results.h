// The gradient result file of a step (.gNN): unit heat flux and temperature gradient at every integration point.
#pragma once

namespace kaldra {

// Writes the file of the step under way, from its final temperatures and the conductivities of its last assembly. Flux
// and gradient columns point down the temperature slope; a NULL element has zeros. Gives 1; 0 after message 1022
// (open), 1193 with the writer's own (write) or 1036 (close), or where Stop made it give the file up.
[[nodiscard]] int WriteGradientResults();

}  // namespace kaldra
