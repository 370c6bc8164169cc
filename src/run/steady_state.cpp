#include "run/steady_state.h"

#include "convergence/convergence_monitor.h"
#include "convergence/graph_memory.h"
#include "element/assembly.h"
#include "element/boundary_conditions.h"
#include "model/problem_model.h"
#include "results/flux_results.h"
#include "results/gradient_results.h"
#include "results/material_results.h"
#include "results/node_results.h"
#include "run/front_end.h"
#include "run/iteration.h"
#include "run/run_state.h"

namespace kaldra {

// One successive substitution: the system at the present temperatures gives the next ones. `previous` keeps those on
// which the matrix was built.
[[nodiscard]] static int Iterate() {
    if (!AssembleSteadySystem() || !IsRunning()) return 0;
    if (!EliminatePrescribed()) return 0;
    KeepAsPrevious();
    if (!IsRunning() || !SolveTemperatures()) return 0;
    return IsRunning();
}

[[nodiscard]] static int WriteResults() {
    if (!ComputeNodalFlows()) return 0;
    if (!IsRunning() || !WriteNodeResults()) return 0;
    if (!IsRunning() || !WriteGradientResults()) return 0;
    if (!IsRunning() || !ComputeFluxResults()) return 0;
    if (!IsRunning() || !WriteMaterialResults()) return 0;
    if (!IsRunning()) return 0;
    frontEnd.StepDone();
    return 1;
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
