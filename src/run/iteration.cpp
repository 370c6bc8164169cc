#include "run/iteration.h"

#include "element/boundary_conditions.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "results/flux_geometry.h"
#include "run/run_state.h"
#include "solver/skyline.h"

namespace kaldra {

int PrepareTables() {
    if (!MakeTable(model.SkylineColumnPtr, static_cast<std::size_t>(model.nodeCount))) return 0;
    if (!BuildSkylineProfile()) return 0;
    if (!IsRunning()) return 0;
    const auto points = static_cast<std::size_t>(model.pointTotal);
    if (!MakeTable(model.SkylineStore, SkylineLength())) return 0;
    if (!MakeTable(model.SlopeFloor, points) || !MakeTable(model.PhaseState, points)) return 0;
    if (!IsRunning()) return 0;
    if (!BuildFluxCrossings()) return 0;
    if (model.problemView == viewPlan && !ComputeNodalAreas()) return 0;
    if (model.qBoundaryCount > 0 && !FindQBoundaryElements()) return 0;
    return 1;
}

int EliminatePrescribed() {
    return EliminateFixedDouble(model.SkylineStore, model.SolutionVector, model.EquationCode, model.SkylineColumnPtr);
}

int SolveTemperatures() {
    if (!SolveSkylineDouble(model.SkylineStore, model.SolutionVector, model.EquationCode, model.SkylineColumnPtr)) {
        return 0;
    }
    for (std::size_t n = 0; n < model.SolutionVector.size(); ++n) {
        if (model.EquationCode[n] != equationInactive) model.nodeStates[n].temperature = model.SolutionVector[n];
    }
    return 1;
}

void KeepAsPrevious() {
    for (NodeState& state : model.nodeStates) state.previous = state.temperature;
}

}  // namespace kaldra
