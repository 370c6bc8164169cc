#include "results/material_results.h"

#include "model/problem_model.h"
#include "platform/number_text.h"
#include "results/result_file.h"

namespace kaldra {

static constexpr RowFormat rowFormat("%5d%5d%+15.6E%+15.6E%+15.6E%+15.6E%+15.6E");

// The file's columns stand in another order than the record.
static char* PutElement(char* out, std::size_t e) {
    const std::size_t points = PointCount(e);
    if (points == 0) return out;
    const PointRuns record = PointResultsOf(e);
    for (std::size_t i = 0; i < points; ++i) {
        out =
            PutLineEnd(PutRow(out, rowFormat, RowNumber(e), RowNumber(i), record.temperature[i], record.conductivity[i],
                              record.waterSlope[i], record.waterContent[i], record.heatCapacity[i]));
    }
    return out;
}

int WriteMaterialResults() {
    return WriteResultFile({StepFileName('r'), 1023, 1037},
                           "Elem# Pnt#  Temperature    Conductivity   SlopeofUnW/C   Unfrozen W/C   Heat Capacity", 85,
                           [](File& file) { return WritePointRows(file, rowFormat, PutElement); });
}

}  // namespace kaldra
