#include "run/analysis.h"

#include <system_error>
#include <thread>

#include "element/element_batches.h"
#include "model/boundary_range.h"
#include "model/data_file.h"
#include "model/function_setup.h"
#include "model/problem_model.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "platform/number_text.h"
#include "restart/initial_conditions.h"
#include "restart/step_files.h"
#include "results/initial_results.h"
#include "results/old_output.h"
#include "run/front_end.h"
#include "run/last_net.h"
#include "run/messages.h"
#include "run/run_lock.h"
#include "run/run_state.h"
#include "run/steady_state.h"
#include "run/transient.h"
#include "run/warnings.h"

namespace kaldra {

static std::thread calcThread;

bool CalcThreadLives() { return calcThread.joinable(); }

bool RunUnderWay() { return runState.running != 0 || CalcThreadLives(); }

void ChooseStartStep() {
    const bool steady = model.analysisType == steadyState;
    runState.startStep = steady ? 0 : 1;
    runState.currentStep = runState.startStep - 1;
}

void BuildPointResultOffsets() {
    std::int32_t total = 0;
    for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
        model.PointResultOffset[e] = total;
        total += static_cast<std::int32_t>(PointCount(e));
    }
    model.pointTotal = total;
}

// ---------------------------------------------------------------------------------------------------------------------
// The start

int MakePointTables() {
    if (!MakeTable(model.PointResultOffset, static_cast<std::size_t>(model.elementCount))) return 0;
    BuildPointResultOffsets();
    return SortElementsIntoBatches() && MakeTable(model.PointResults, 5 * model.batches.pointPlaces) &&
           MakeTable(model.SolutionVector, static_cast<std::size_t>(model.nodeCount));
}

[[nodiscard]] static int CreateCalcThread() {
    try {
        calcThread = std::thread(CalcThreadProc);
        return 1;
    } catch (const std::system_error&) {
        return ShowError(4001);
    }
}

static void WarnOfBoundaryRanges() {
    for (const OutsideRange& outside : BoundaryFunctionsOutside(runState.startStep)) {
        WarnOfLine(model.dataFileName, model.bFunctions[IndexOf(outside.function)].line, OutsideRangeText(outside));
    }
}

// Results on disk from another time sequence cannot be built on.
[[nodiscard]] static int CheckTimeSequence() {
    const std::int32_t last = LastConsistentStep('t');
    if (last >= runState.startStep - 1) return 1;
    WarnOfLostTime(last + 1);
    if (last < 1) {
        ShowComposedMessage(1301, 1, 1303, 0, 0, boxExclamation);
    } else {
        ShowComposedMessage(1301, 1, 1302, last + 1, 1303, boxExclamation);
    }
    return 0;
}

int StartAnalysis() {
    if (!HoldRunLock()) return 0;
    ClearWarnings();
    frontEnd.ShowRunIcon(true);
    (void)FreeModel();
    InitModel(1);
    if (!ReadDataFile() || !CheckTimeSequence()) return 0;
    if (!MakePointTables() || !ReadInitialConditions()) return 0;
    if (!SetupFunctions()) return 0;
    WarnOfBoundaryRanges();
    frontEnd.ClearStatus();
    runState.haltRequested = 0;
    runState.unconvergedSteps = 0;
    runState.graphOwnsModel = 0;  // before the thread lives: closing a graph window must not release its tables
    runState.running = 1;
    frontEnd.UpdateMenuState();
    frontEnd.UpdateButtonState();
    if (model.analysisType == transient && !WriteInitialResults()) return ShowError(1082);
    if (!ClearOldOutput()) return 0;
    return CreateCalcThread();
}

// ---------------------------------------------------------------------------------------------------------------------
// The calculation thread

// The marker is for other programs: whether it can be made or deleted changes nothing here.
static void CreateLockFile() {
    File marker;
    if (!marker.Create(runState.lockFilePath) || !marker.Close()) {
        AddWarning(runState.lockFilePath + " could not be made, so other programs do not see that a run is under way");
    }
    (void)TakeLastSystemError();
}

static void DeleteLockFile() {
    if (!DeleteFileIfThere(runState.lockFilePath)) {
        AddWarning(runState.lockFilePath + " could not be deleted and tells other programs of a run: delete it");
    }
    (void)TakeLastSystemError();
}

static void WarnOfUnconvergedSteps() {
    if (runState.unconvergedSteps == 0) return;
    const std::string limit = FormatText("maxIterations (%d) without converging", model.maxIterations);
    if (model.analysisType == steadyState) {
        return WarnOfLine(
            model.dataFileName, model.convergeLine,
            "the iteration ended at " + limit + ": raise maxIterations, or the tolerance if the norm does not settle");
    }
    WarnOfLine(model.dataFileName, model.convergeLine,
               FormatText("%d of %d steps ended at %s, the first of them step %d: raise maxIterations, or take shorter "
                          "steps there",
                          runState.unconvergedSteps, model.stepCount - runState.startStep + 1, limit,
                          runState.firstUnconvergedStep));
}

[[nodiscard]] static int Analyse() {
    frontEnd.AppendStatusPlain(StringText(1172));
    frontEnd.StartRunAnimation();
    CreateLockFile();
    if (model.analysisType == steadyState) return RunSteadyState();
    return model.analysisType == transient ? RunTransient() : 0;
}

int CalcThreadProc() {
    int result = CatchLackOfMemory(Analyse);
    const auto finish = [result] {
        DeleteLockFile();
        if (result == 1) WarnOfUnconvergedSteps();
        return result;
    };
    result = CatchLackOfMemory(finish);
    frontEnd.RunFinished(result);
    return result;
}

// ---------------------------------------------------------------------------------------------------------------------
// The end

void HandleCalcThreadMsg(int first, int) {
    if (first != runFinishedMessage) return;
    calcThread.join();  // its last act was the post
    EndRun();
    const auto tell = [] {
        frontEnd.ResultsChanged();
        frontEnd.AppendStatusPlain(StringText(1050));
        frontEnd.Beep();
        return 1;
    };
    (void)CatchLackOfMemory(tell);
}

void EndRun() {
    runState.running = 0;
    runState.fileOpen = 1;
    ReleaseRunLock();
    frontEnd.UpdateMenuState();
    frontEnd.UpdateButtonState();
    frontEnd.ShowRunIcon(false);
    frontEnd.StopRunAnimation();
    frontEnd.RepaintMainWindow();
    (void)FreeModel();
    InitModel(1);
}

}  // namespace kaldra
