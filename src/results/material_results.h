// The material property result file of a step (.rNN): what was recorded at every integration point.
#pragma once

namespace kaldra {

// Writes the file of the step under way from PointResults, the values of its last assembly. Gives 1; 0 after message 1023
// (open), 1193 with the writer's own (write) or 1037 (close), or where Stop made it give the file up.
[[nodiscard]] int WriteMaterialResults();

}  // namespace kaldra
