#include "results/material_results.h"

#include "model/problem_model.h"
#include "platform/number_text.h"
#include "results/result_file.h"

namespace kaldra {

static constexpr RowFormat rowFormat("%5d%5d%+15.6E%+15.6E%+15.6E%+15.6E%+15.6E");

// The file's columns stand in another order than the record.
static char* PutMaterialRow(char* out, std::size_t e, std::size_t point) {
    const PointRuns record = PointResultsOf(e);
    return PutRow(out, rowFormat, RowNumber(e), RowNumber(point), record.temperature[point], record.conductivity[point],
                  record.waterSlope[point], record.waterContent[point], record.heatCapacity[point]);
}

int WriteMaterialResults() {
    return WriteResultFile({StepFileName('r'), 1023, 1037},
                           "Elem# Pnt#  Temperature    Conductivity   SlopeofUnW/C   Unfrozen W/C   Heat Capacity", 85,
                           [](File& file) { return WritePointRows(file, rowFormat, PutMaterialRow); });
}

}  // namespace kaldra
