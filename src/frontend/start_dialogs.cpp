#include "frontend/start_dialogs.h"

#include "model/data_file.h"
#include "model/file_names.h"
#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/files.h"
#include "platform/number_text.h"
#include "restart/initial_conditions.h"
#include "restart/start_step.h"
#include "restart/step_files.h"
#include "run/front_end.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

[[nodiscard]] static int HaveTimeSequence() { return model.stepCount != 0 || ReadTimeSequence(); }

// ---------------------------------------------------------------------------------------------------------------------
// Start Time

StartTimeList ListStartTimes() {
    StartTimeList list;
    if (!HaveTimeSequence()) return list;
    for (std::int32_t step = 1; step <= model.stepCount; ++step) {
        const bool hasResults = FileExists(StepFileBesideData('t', step));
        list.rows.push_back(FormatText("%2d %20.4E %20.4E      %s", step, StepIncrement(step), ElapsedTime(step),
                                       StringText(hasResults ? 4028 : 4029)));
    }
    if (runState.startStep >= 1 && runState.startStep <= model.stepCount) list.selected = runState.startStep - 1;
    return list;
}

// ---------------------------------------------------------------------------------------------------------------------
// Open Initial Conditions

int BeginInitialFiles(InitialFiles& files) {
    if (!HaveTimeSequence()) return 0;
    files = {runState.initialTemperatureFile, runState.initialConductivityFile};
    return 1;
}

// The file beside `file` with the first letter of its extension changed to r; empty where there is none.
static std::string ConductivitiesBeside(const std::string& file) {
    const std::size_t dot = file.rfind('.');
    std::string beside = file;
    beside[dot + 1] = 'r';
    return FileExists(beside) ? beside : std::string();
}

int PickInitialFile(InitialFiles& files, const std::string& path) {
    if (!FileExists(path)) return ShowError(1075);
    if (!ValidateInitialFile(path, 't')) return 0;
    const bool ownResult = HasSameStem(path, model.dataFileName);
    files = {path, ownResult ? ConductivitiesBeside(path) : std::string()};
    return 1;
}

void ClearInitialFiles(InitialFiles& files) { files = {}; }

void AcceptInitialFiles(const InitialFiles& files) {
    runState.initialTemperatureFile = files.temperatures;
    runState.initialConductivityFile = files.conductivities;
    RefreshInitialConditionMode();
    frontEnd.UpdatePanelLabels();
}

}  // namespace kaldra
