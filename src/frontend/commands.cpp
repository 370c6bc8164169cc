#include "frontend/commands.h"

#include "convergence/convergence_history.h"
#include "convergence/graph_memory.h"
#include "frontend/start_dialogs.h"
#include "model/data_file.h"
#include "model/file_names.h"
#include "model/problem_model.h"
#include "platform/files.h"
#include "restart/start_step.h"
#include "run/analysis.h"
#include "run/front_end.h"
#include "run/last_net.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

void NewDocument() {
    runState.initialConditionMode = 0;
    runState.initialTemperatureFile.clear();
    runState.initialConductivityFile.clear();
    model.dataFileName.clear();
    frontEnd.UpdatePanelLabels();
    frontEnd.ClearStatus();
    (void)FreeModel();
    InitModel(0);
    InitModel(1);
    frontEnd.UpdateMenuState();
    frontEnd.UpdateButtonState();
    frontEnd.RepaintMainWindow();
}

// A data file was opened and read: its start step, the paths beside it, and a fresh graph.
[[nodiscard]] static int PrepareDocument() {
    frontEnd.ClearStatus();
    ChooseStartStep();
    frontEnd.UpdatePanelLabels();
    std::int32_t dotPosition = 0;
    std::int32_t length = 0;
    if (!FindExtension(model.dataFileName, dotPosition, length)) {
        EndRun();
        return 0;
    }
    runState.convergenceFileExists = FileExists(ConvergenceFileBesideData()) ? 1 : 0;
    runState.lockFilePath = ReplaceExtension(model.dataFileName, StringText(1089));
    frontEnd.UpdateButtonState();
    SetGraphDefaults();
    frontEnd.UpdateMenuState();
    return 1;
}

int OpenDataFile(const std::string& path) {
    if (path.size() > longestPath) {
        NewDocument();
        return ShowError(1074);
    }
    const auto read = [&path] {
        runState.pendingFileName = path;
        model.dataFileName = path;
        runState.fileOpen = 1;
        runState.initialConditionMode = 0;
        return ReadDataFile();
    };
    if (!CatchLackOfMemory(read)) {
        frontEnd.ClearStatus();
        NewDocument();
        return 0;
    }
    return CatchLackOfMemory(PrepareDocument);
}

int OpenChosenFile(const std::string& path) {
    NewDocument();
    return OpenDataFile(path);
}

std::string StripQuotes(std::string name) {
    if (name.ends_with('"')) name.pop_back();
    if (name.starts_with('"')) name.erase(0, 1);
    return name;
}

int OpenNamedFile(const std::string& name) {
    runState.pendingFileName = TruePath(FileExists(name) ? name : StripQuotes(name));
    if (FileExists(runState.pendingFileName)) return OpenDataFile(std::string(runState.pendingFileName));
    runState.pendingFileName.clear();
    return 0;
}

void ChooseStartTime(std::int32_t step) {
    if (step == runState.startStep || SetStartStep(step)) return;
    ShowComposedMessage(4005, 0, 0, 0, 0, boxExclamation);
}

int ChooseInitialConditions(const std::string& file) {
    InitialFiles files;
    if (!PickInitialFile(files, file)) return 0;
    AcceptInitialFiles(files);
    return runState.initialConditionMode != 0 ? 1 : ShowError(1075);  // it may be gone since it was picked
}

int Start() {
    if (CatchLackOfMemory(StartAnalysis)) return 1;
    EndRun();
    return 0;
}

void Stop() {
    frontEnd.AppendStatus(StringText(1179));
    runState.running = 0;
}

void HaltIteration() {
    runState.haltRequested = 1;
    frontEnd.SetHaltEnabled(false);
    frontEnd.AppendStatus(StringText(runState.saveStep != 0 ? 1105 : 1104));
}

EnabledCommands CommandsNow() {
    const bool open = runState.fileOpen != 0;
    const bool idle = !RunUnderWay();
    const bool restartable = open && idle && model.analysisType != steadyState;
    EnabledCommands enabled{};
    enabled.newDocument = idle && open;
    enabled.openDataFile = idle;
    enabled.openInitialConditions = restartable;
    enabled.exit = idle;
    enabled.startTime = restartable;
    enabled.start = open && idle;
    enabled.stop = open && !idle;
    enabled.haltIteration = open && !idle && runState.haltRequested == 0;
    enabled.graph = open && !GraphWindowIsOpen() && (!idle || runState.convergenceFileExists != 0);
    return enabled;
}

}  // namespace kaldra
