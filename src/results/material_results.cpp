#include "results/material_results.h"

#include "model/problem_model.h"
#include "platform/number_text.h"
#include "results/result_file.h"

namespace kaldra {

// The file's columns stand in another order than the record.
static int WriteRow(File& file, std::size_t e, std::size_t point) {
    const PointRuns record = PointResultsOf(e);
    return WriteBuffered(file,
                         FormatText("%5d%5d%+15.6E%+15.6E%+15.6E%+15.6E%+15.6E", RowNumber(e), RowNumber(point),
                                    record.temperature[point], record.conductivity[point], record.waterSlope[point],
                                    record.waterContent[point], record.heatCapacity[point]));
}

int WriteMaterialResults() {
    return WriteResultFile({StepFileName('r'), 1023, 1037},
                           "Elem# Pnt#  Temperature    Conductivity   SlopeofUnW/C   Unfrozen W/C   Heat Capacity", 85,
                           [](File& file) { return WritePointRows(file, WriteRow); });
}

}  // namespace kaldra
