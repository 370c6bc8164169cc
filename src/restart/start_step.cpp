#include "restart/start_step.h"

#include "model/problem_model.h"
#include "platform/files.h"
#include "restart/step_files.h"
#include "run/front_end.h"
#include "run/run_state.h"

namespace kaldra {

int SetStartStep(std::int32_t step) {
    runState.startStep = step;
    runState.currentStep = step - 1;
    const int found = FindDefaultInitialFiles();
    frontEnd.UpdatePanelLabels();
    return found;
}

int FindDefaultInitialFiles() {
    runState.initialTemperatureFile.clear();
    runState.initialConductivityFile.clear();
    runState.initialConditionMode = 0;
    const std::int32_t before = runState.startStep - 1;
    if (before <= 0) return 1;
    std::string found;
    if (!HasExtensionFile(model.dataFileName, StepExtension('t', before), found)) return 0;
    runState.initialTemperatureFile = found;
    runState.initialConditionMode = 1;
    if (!HasExtensionFile(model.dataFileName, StepExtension('r', before), found)) return 0;
    runState.initialConductivityFile = found;
    runState.initialConditionMode = 2;
    return 1;
}

void RefreshInitialConditionMode() {
    runState.initialConditionMode = 0;
    if (!FileExists(runState.initialTemperatureFile)) return;
    runState.initialConditionMode = FileExists(runState.initialConductivityFile) ? 2 : 1;
}

}  // namespace kaldra
