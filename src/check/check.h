// The check of a data file: everything in it that is wrong or doubtful, without a run.
//
//     ReadLoosely     goes on where ReadDataFile stops, and notes what it cannot read
//     CheckSettings   looks at what was read, record by record
//     CheckMesh
//     the engine      reads and prepares a file without errors as a start does, so that none escapes
#pragma once

#include <string>

#include "check/findings.h"

namespace kaldra {

// The findings about a data file by line. Messages of the engine become findings. Touches no file but this one, and
// leaves the model empty. Front end's thread, while no calculation thread lives.
[[nodiscard]] Findings CheckDataFile(const std::string& path);

}  // namespace kaldra
