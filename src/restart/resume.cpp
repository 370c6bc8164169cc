#include "restart/resume.h"

#include <algorithm>
#include <string>

#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/number_text.h"
#include "restart/step_files.h"
#include "restart/step_results.h"
#include "results/flux_geometry.h"
#include "run/run_state.h"
#include "run/warnings.h"

namespace kaldra {

namespace {

// How many rows a flux file has comes from the mesh.
bool FindCrossings() {
    if (!MakeTable(model.fluxResults, model.fluxSections.size())) return false;
    runState.running = 1;  // or it would take a Stop for given
    const bool found = BuildFluxCrossings() == 1;
    runState.running = 0;
    return found;
}

bool DataFileIsNewer(std::int32_t step) { return IsNewerThan(model.dataFileName, StepFileBesideData('t', step)); }

std::int32_t LastSavedStep() {
    std::int32_t step = model.stepCount;
    while (step > 0 && model.timeSteps[IndexOf(step)].saveFlag != 1) --step;
    return step;
}

ResumePoint FindSteadyPoint() {
    const bool whole = HasWholeResults(0) && !DataFileIsNewer(0);
    return {whole, whole ? 0 : -1};
}

// A start has to take the files of the steps before it for those of its time sequence.
ResumePoint FindTransientPoint(std::int32_t firstStep) {
    const std::int32_t consistent = LastConsistentStep('t');
    if (consistent < model.stepCount) WarnOfLostTime(consistent + 1);
    for (std::int32_t step = std::min(consistent, LastSavedStep()); step >= firstStep; --step) {
        if (model.timeSteps[IndexOf(step)].saveFlag != 1 || !HasWholeResults(step)) continue;
        if (DataFileIsNewer(step)) {
            AddWarning(
                FormatText("%s was changed after the results of step %d, which are built on all the same: start "
                           "without --resume if they no longer hold",
                           model.dataFileName, step));
        }
        return {step == LastSavedStep(), step};
    }
    return {};
}

}  // namespace

ResumePoint FindResumePoint(std::int32_t firstStep) {
    if (!FindCrossings()) return {};
    return model.analysisType == steadyState ? FindSteadyPoint() : FindTransientPoint(std::max(firstStep, 1));
}

}  // namespace kaldra
