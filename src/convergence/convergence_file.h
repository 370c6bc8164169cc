// The convergence file (.cnp): one line per iteration, the record of a run.
//
// It is replaced at the first iteration of a run, and opened, appended to and closed at every iteration, so that all of
// its text is on the disk when MonitorConvergence returns. Calculation thread.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "platform/files.h"

namespace kaldra {

// Path of the file of the run under way: baseName with ".cnp".
extern std::string ConvergencePath;

// Sets ConvergencePath and replaces the file by one with the eight header lines. Gives 1, or 0 after message 1025, 1193
// or 1038.
[[nodiscard]] int CreateConvergenceFile();

// Opens the file at its end. Gives 1, or 0 after message 1025.
[[nodiscard]] int OpenConvergenceFile(File& file);

// Writes the lines and closes the file. Gives 1, or 0 after message 1193 or 1038.
[[nodiscard]] int AppendConvergenceLines(File& file, std::span<const std::string> lines);

}  // namespace kaldra
