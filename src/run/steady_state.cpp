#include "run/steady_state.h"

#include "convergence/convergence_monitor.h"
#include "convergence/graph_memory.h"
#include "element/assembly.h"
#include "element/boundary_conditions.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "results/node_results.h"
#include "run/front_end.h"
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
    if (model.problemView == viewPlan && !ComputeNodalAreas()) return 0;
    if (model.qBoundaryCount > 0 && !FindQBoundaryElements()) return 0;
    return 1;
}

// One successive substitution: the system at the present temperatures gives the next ones. `previous` keeps those on
// which the matrix was built.
[[nodiscard]] static int Iterate() {
    if (!AssembleSteadySystem() || !IsRunning()) return 0;
    if (!EliminateFixedDouble(model.SkylineStore, model.SolutionVector, model.EquationCode, model.SkylineColumnPtr)) {
        return 0;
    }
    for (NodeState& state : model.nodeStates) state.previous = state.temperature;
    if (!IsRunning()) return 0;
    if (!SolveSkylineDouble(model.SkylineStore, model.SolutionVector, model.EquationCode, model.SkylineColumnPtr)) {
        return 0;
    }
    TakeSolution();
    return IsRunning();
}

[[nodiscard]] static int WriteResults() {
    if (!ComputeNodalFlows()) return 0;
    if (!IsRunning() || !WriteNodeResults()) return 0;
    return IsRunning();
}

int RunSteadyState() {
    if (!PrepareTables() || !PrepareBoundaryValues()) return 0;
    runState.iteration = 1;
    if (!IsRunning()) return 0;
    runState.saveStep = 1;
    frontEnd.SetHaltEnabled(true);
    runState.haltRequested = 0;
    SetGraphStep(0);

    int converged = 0;
    while (runState.iteration <= model.maxIterations && converged == 0 && runState.haltRequested == 0) {
        if (!Iterate()) return 0;
        converged = MonitorConvergence();
        if (converged < 0) return 0;
        ++runState.iteration;
    }
    if (converged == 0 && runState.haltRequested == 0) NoteUnconvergedStep();
    return WriteResults();
}

}  // namespace kaldra
