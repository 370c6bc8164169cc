#include "results/node_results.h"

#include "model/problem_model.h"
#include "platform/number_text.h"
#include "results/result_file.h"

namespace kaldra {

static RowsEnd WriteNodeRows(File& file) {
    static constexpr RowFormat format("%5d %+14.6E %+14.6E");
    return WriteRows(file, static_cast<std::size_t>(model.nodeCount), format, [](char* out, std::size_t n) {
        return PutRow(out, format, RowNumber(n), model.nodeStates[n].temperature, model.SolutionVector[n]);
    });
}

int WriteNodeResults() {
    return WriteResultFile({StepFileName('t'), 1021, 1035}, "Node#  Temperature    Heat_Flux(Q)", 35, WriteNodeRows);
}

}  // namespace kaldra
