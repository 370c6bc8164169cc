// The history of the convergence file (.cnp), read back: which steps it holds, and the curve of one of them.
//
// Both readers work on the file beside the open data file and leave what they find in the graph memory. They are for
// the front end's thread while no calculation thread lives. The file is read with hmtxGraphMem free, so that a message
// can be shown; the mutex is taken for the store alone. A reader that fails on the file has stored nothing, one that
// lacks memory leaves no step and no point.
#pragma once

#include <cstdint>
#include <string>

namespace kaldra {

// Path of the convergence file of the open data file.
[[nodiscard]] std::string ConvergenceFileBesideData();

// Fills GraphStepList and GraphStepIterations, which grow with the file: it may hold more steps than stepCount. The
// display range becomes the whole last step, and the curve gets room for it. Gives 1, or 0 after message 1025 (open),
// 1153 (a damaged file, a steady-state one of fewer than two iterations) or 1138.
[[nodiscard]] int ScanConvergenceFile();

// Fills GraphIterations and GraphNorms with the iterations of `step`, which ScanConvergenceFile has found; x counts
// them. A step that is not in the list has an empty curve. Gives 1, or 0 after message 1025, 1153 or 1138.
[[nodiscard]] int LoadConvergenceStep(std::int32_t step);

}  // namespace kaldra
