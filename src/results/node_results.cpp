#include "results/node_results.h"

#include "model/problem_model.h"
#include "platform/number_text.h"
#include "results/result_file.h"

namespace kaldra {

static bool WriteNodeRows(File& file) {
    for (std::int32_t number = 1; number <= model.nodeCount; ++number) {
        const std::size_t n = IndexOf(number);
        const std::string row =
            FormatText("%5d %+14.6E %+14.6E", number, model.nodeStates[n].temperature, model.SolutionVector[n]);
        if (WriteBuffered(file, row) != 1) return false;
    }
    return true;
}

int WriteNodeResults() {
    return WriteResultFile({StepFileName('t'), 1021, 1035}, "Node#  Temperature    Heat_Flux(Q)", 35, WriteNodeRows);
}

}  // namespace kaldra
