// Exports that take one step after another: from the results on disk, or while a run is saving them.
#pragma once

#include <string>
#include <vector>

#include "post/cells.h"
#include "post/csv_export.h"
#include "post/result_set.h"

namespace kaldra {

struct StepExports {
    bool vtu = false;  // wanted
    bool csv = false;

    std::vector<std::string> written;  // files that are whole, in order; the .pvd stands once
    bool begun = false;
    MeshCells cells;
    CsvTables tables;
    std::vector<SavedStep> steps;
};

// Writes what the step adds. The model has to be read. Grids and their collection are there at once, tables when they
// are ended. Each gives 1, or 0 after message 5003 or 1138.
[[nodiscard]] int ExportStep(StepExports& exports, const StepResults& results);
[[nodiscard]] int EndExports(StepExports& exports);

// Reads back the step that a run has just saved and exports it, after the whole results of earlier steps if it is the
// first. Gives 1, or 0 after message 5002, 5003 or 1138.
[[nodiscard]] int ExportSavedStep(StepExports& exports, std::int32_t step);

}  // namespace kaldra
