#include "restart/start_step.h"

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
    const std::string temperatures = StepFileBesideData('t', before);
    if (!FileExists(temperatures)) return 0;
    runState.initialTemperatureFile = temperatures;
    runState.initialConditionMode = 1;
    const std::string conductivities = StepFileBesideData('r', before);
    if (!FileExists(conductivities)) return 0;
    runState.initialConductivityFile = conductivities;
    runState.initialConditionMode = 2;
    return 1;
}

void RefreshInitialConditionMode() {
    runState.initialConditionMode = 0;
    if (!FileExists(runState.initialTemperatureFile)) return;
    runState.initialConditionMode = FileExists(runState.initialConductivityFile) ? 2 : 1;
}

}  // namespace kaldra
