// Unstructured grids of the Visualization Toolkit: NAME.NN.vtu per step, and NAME.pvd that names them with their times.
//
// Numbers are those of the result files, in base64. Nodes carry Temperature and HeatFlow; cells carry Element,
// Material, Null, Infinite and, as means over the points, Flux, Conductivity, UnfrozenWater, HeatCapacity.
#pragma once

#include <span>
#include <string>

#include "post/cells.h"
#include "post/result_set.h"

namespace kaldra {

// dataFileName's folder and stem with .NN.vtu.
[[nodiscard]] std::string VtuName(std::int32_t step);

// Writes the grid of a step. Gives 1, or 0 after message 5003 or 1138.
[[nodiscard]] int WriteVtu(const MeshCells& cells, const StepResults& results);

// Writes the collection of these steps' grids. Gives 1, or 0 after message 5003.
[[nodiscard]] int WritePvd(std::span<const SavedStep> steps);

[[nodiscard]] std::string PvdName();

}  // namespace kaldra
