#include "run/iteration.h"

#include <bit>
#include <cstdint>

#include "element/assembly.h"
#include "element/boundary_conditions.h"
#include "element/element_batches.h"
#include "element/system_matrix.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "results/flux_geometry.h"
#include "run/run_state.h"
#include "solver/elimination.h"
#include "solver/solution.h"

namespace kaldra {

int PrepareTables() {
    const std::size_t points = model.batches.pointPlaces;
    if (!MakeTable(model.SlopeFloor, points) || !MakeTable(model.PhaseState, points)) return 0;
    if (!FillElementBatches() || !BuildSystemMatrix() || !PrepareSolution()) return 0;
    if (!IsRunning()) return 0;
    if (!FindBoundaryElements() || !BuildFluxCrossings()) return 0;
    if (model.problemView == viewPlan && !ComputeNodalAreas()) return 0;
    if (model.qBoundaryCount > 0 && !FindQBoundaryElements()) return 0;
    return 1;
}

int EliminatePrescribed() { return EliminateFixedDouble(model.system, model.SolutionVector, model.EquationCode); }

int SolveTemperatures() {
    if (!SolveSystem()) return 0;
    bool changed = false;
    for (std::size_t n = 0; n < model.SolutionVector.size(); ++n) {
        float& temperature = model.nodeStates[n].temperature;
        if (model.EquationCode[n] == equationInactive) continue;
        changed = changed ||
                  std::bit_cast<std::uint32_t>(temperature) != std::bit_cast<std::uint32_t>(model.SolutionVector[n]);
        temperature = model.SolutionVector[n];
    }
    if (changed) ++model.temperatureVersion;
    return 1;
}

void KeepAsPrevious() {
    for (NodeState& state : model.nodeStates) state.previous = state.temperature;
}

}  // namespace kaldra
