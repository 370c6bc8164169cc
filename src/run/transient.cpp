#include "run/transient.h"

#include <algorithm>

#include "convergence/convergence_monitor.h"
#include "convergence/graph_memory.h"
#include "element/assembly.h"
#include "element/boundary_conditions.h"
#include "element/phase_change.h"
#include "model/problem_model.h"
#include "results/flux_results.h"
#include "results/gradient_results.h"
#include "results/material_results.h"
#include "results/node_results.h"
#include "run/front_end.h"
#include "run/iteration.h"
#include "run/run_state.h"

namespace kaldra {

// Every step starts with no point under phase-change control.
[[nodiscard]] static int BeginStep() {
    std::ranges::fill(model.SlopeFloor, 0.0F);
    std::ranges::fill(model.PhaseState, std::uint8_t{0});
    ++runState.currentStep;
    SetGraphStep(runState.currentStep);
    runState.saveStep = model.timeSteps[IndexOf(runState.currentStep)].saveFlag == 1 ? 1 : 0;
    if (!IsRunning() || !PrepareBoundaryValues()) return 0;
    runState.PhaseChangeMode = phaseSearching;
    runState.phaseRegionReported = 0;
    runState.iteration = 1;
    frontEnd.SetHaltEnabled(false);
    runState.haltRequested = 0;
    return 1;
}

// `previous` keeps the end of the last step for the whole iteration.
[[nodiscard]] static int Iterate() {
    if (!IsRunning() || !AssembleTransientSystem()) return 0;
    if (!IsRunning() || !EliminatePrescribed()) return 0;
    if (!IsRunning() || !SolveTemperatures()) return 0;
    return IsRunning();
}

[[nodiscard]] static int SolveStep() {
    int converged = 0;
    while (runState.iteration <= model.maxIterations && (runState.PhaseChangeMode != phaseEnded || converged == 0)) {
        if (runState.iteration > 1 && !frontEnd.IsHaltEnabled()) frontEnd.SetHaltEnabled(true);
        if (!Iterate()) return 0;
        converged = MonitorConvergence();
        if (converged < 0) return 0;
        if (runState.PhaseChangeMode != phaseEnded && converged == 1 && !ControlPhaseChange()) return 0;
        if (runState.haltRequested == 1) {
            converged = 1;
            runState.PhaseChangeMode = phaseEnded;
        }
        ++runState.iteration;
    }
    if (runState.PhaseChangeMode != phaseEnded || converged == 0) NoteUnconvergedStep();
    return IsRunning();
}

[[nodiscard]] static int EndStep() {
    if (runState.saveStep == 1) {
        if (!ComputeNodalFlows()) return 0;
        if (!IsRunning() || !WriteGradientResults()) return 0;
        if (!IsRunning() || !ComputeFluxResults()) return 0;
        if (!IsRunning() || !WriteNodeResults()) return 0;
        if (!IsRunning() || !WriteMaterialResults()) return 0;
        if (!IsRunning()) return 0;
    }
    frontEnd.StepDone();
    KeepAsPrevious();
    return 1;
}

int RunTransient() {
    if (!PrepareTables()) return 0;
    frontEnd.SetHaltEnabled(true);
    runState.haltRequested = 0;
    while (runState.currentStep + 1 <= model.stepCount) {
        if (!BeginStep() || !SolveStep() || !EndStep()) return 0;
    }
    return 1;
}

}  // namespace kaldra
