#include "post/step_exports.h"

#include "platform/memory.h"
#include "post/vtu_export.h"

namespace kaldra {

[[nodiscard]] static int Begin(StepExports& exports) {
    if (exports.begun) return 1;
    exports.begun = true;
    return (!exports.vtu || BuildCells(exports.cells)) && (!exports.csv || BeginCsv(exports.tables));
}

// The collection is written anew with every step, so that it is right whenever the run ends.
[[nodiscard]] static int ExportGrid(StepExports& exports, const StepResults& results) {
    if (!WriteVtu(exports.cells, results) || !WritePvd(exports.steps)) return 0;
    if (exports.steps.size() > 1) exports.written.pop_back();
    exports.written.push_back(VtuName(results.step));
    exports.written.push_back(PvdName());
    return 1;
}

int ExportStep(StepExports& exports, const StepResults& results) {
    if (!Begin(exports)) return 0;
    if (!AppendRecord(exports.steps, SavedStep{results.step, results.elapsed})) return 0;
    if (exports.vtu && !ExportGrid(exports, results)) return 0;
    return !exports.csv || AddToCsv(exports.tables, results);
}

int EndExports(StepExports& exports) {
    if (!exports.begun || !exports.csv) return 1;
    return EndCsv(exports.tables, exports.written);
}

[[nodiscard]] static int ExportFromDisk(StepExports& exports, std::int32_t step) {
    StepResults results;
    return ReadStepResults(step, results) && ExportStep(exports, results);
}

int ExportSavedStep(StepExports& exports, std::int32_t step) {
    const bool isFirst = exports.steps.empty();
    for (std::int32_t earlier = 1; isFirst && earlier < step; ++earlier) {
        if (HasWholeResults(earlier) && !ExportFromDisk(exports, earlier)) return 0;
    }
    return ExportFromDisk(exports, step);
}

}  // namespace kaldra
