#include "frontend/console/run_extras.h"

#include <chrono>
#include <filesystem>
#include <future>
#include <new>
#include <system_error>

#include "frontend/console/console.h"
#include "frontend/console/run_record.h"
#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/files.h"
#include "platform/parallel.h"
#include "platform/sha256.h"
#include "post/heat_balance.h"
#include "post/step_exports.h"
#include "run/front_end.h"
#include "run/run_state.h"
#include "solver/solution.h"

namespace kaldra {

namespace {

using Clock = std::chrono::steady_clock;

struct Extras {
    WantedExtras wanted;
    StepExports exports;
    HeatBalance balance;
    RunRecord record;
    std::future<std::string> digest;  // of the data file, computed while it is read
    Clock::time_point begin;
    bool whole = true;         // of exports and balance
    bool recordIsKept = true;  // false once it could not be written
    std::vector<std::string> summary;
    std::vector<StepRecord> steps;  // the calculation thread's until it has ended, as the record is written meanwhile
    std::int32_t unconverged = 0;
};

Extras extras;

void NoteStep() {
    StepRecord step;
    step.step = runState.currentStep;
    step.elapsed = ElapsedTime(step.step);
    step.iterations = runState.iteration - 1;
    step.halted = runState.haltRequested != 0;
    step.converged = !step.halted && runState.unconvergedSteps == extras.unconverged;
    step.saved = runState.saveStep != 0;
    extras.unconverged = runState.unconvergedSteps;
    extras.steps.push_back(step);
}

// An export that has failed is given up; the run goes on.
void StepDone() {
    NoteStep();
    const bool wantsExport = extras.exports.vtu || extras.exports.csv;
    if (wantsExport && runState.saveStep != 0 && extras.whole) {
        extras.whole = ExportSavedStep(extras.exports, runState.currentStep) == 1;
    }
    if (extras.wanted.balance && !AddStepBalance(extras.balance)) extras.whole = false;
}

// Empty, too, where memory is short for it.
std::string DigestOf(const std::string& dataFile) {
    try {
        return Sha256OfFile(dataFile);
    } catch (const std::bad_alloc&) {
        return {};
    }
}

void BeginDigest(const std::string& dataFile) {
    extras.record.dataFile.path = dataFile;
    try {
        extras.digest = std::async(std::launch::async, DigestOf, dataFile);
    } catch (const std::system_error&) {  // no thread can be had
        extras.record.dataFile.sha256 = DigestOf(dataFile);
    }
}

void EndDigest() {
    if (extras.digest.valid()) extras.record.dataFile.sha256 = extras.digest.get();
}

void WriteRecord() {
    EndDigest();
    if (extras.recordIsKept) extras.recordIsKept = WriteRunRecord(extras.record) == 1;
}

void NoteExit(const std::string& reason, int exitStatus) {
    RunRecord& record = extras.record;
    record.end = PresentTime();
    record.seconds = std::chrono::duration<double>(Clock::now() - extras.begin).count();
    record.steps = extras.steps;
    record.messages = MessagesShown();
    record.warnings = WarningsShown();
    record.exitReason = reason;
    record.exitStatus = exitStatus;
}

}  // namespace

void ConnectExtras(const WantedExtras& wanted) {
    extras.wanted = wanted;
    extras.exports.vtu = wanted.vtu;
    extras.exports.csv = wanted.csv;
    extras.begin = Clock::now();
    extras.record.begin = PresentTime();
    extras.record.commandLine = wanted.commandLine;
    std::error_code error;
    extras.record.workingFolder = std::filesystem::current_path(error).string();
    frontEnd.StepDone = StepDone;
}

void NoteDocument(const std::string& dataFile) {
    RunRecord& record = extras.record;
    BeginDigest(dataFile);
    record.analysisType = model.analysisType;
    record.startStep = runState.startStep;
    record.threads = ThreadCount();
    if (runState.initialConditionMode >= 1) {
        record.initialTemperatures = RecordOfFile(runState.initialTemperatureFile);
    }
    if (runState.initialConditionMode == 2) {
        record.initialConductivities = RecordOfFile(runState.initialConductivityFile);
    }
}

void NoteBegin() {
    extras.record.exitReason = "under way";
    WriteRecord();
}

void NoteFailedStart(int exitStatus) {
    EndDigest();
    if (FileExists(RunRecordName(extras.record.dataFile.path))) return;
    NoteExit("the start failed", exitStatus);
    WriteRecord();
}

static void EndBalance() {
    if (!extras.wanted.balance || extras.balance.steps.empty()) return;
    extras.summary.push_back(BalanceSentence(extras.balance));
    WarnOfBalance(extras.balance);
    if (WriteBalance(extras.balance)) {
        extras.exports.written.push_back(BalanceName());
    } else {
        extras.whole = false;
    }
}

void EndExtras(bool finished) {
    extras.record.solver = UsedSolver() == Solver::Sparse ? "sparse" : "skyline";
    if (!finished) extras.record.stepUnderWay = runState.currentStep;
    if (extras.whole && !EndExports(extras.exports)) extras.whole = false;
    EndBalance();
    for (const std::string& path : extras.exports.written) extras.summary.push_back(path);
}

void ReportExtras() {
    for (const std::string& line : extras.summary) Report(line);
}

bool ExtrasAreWhole() { return extras.whole && extras.recordIsKept; }

int NoteEnd(const std::string& reason, int exitStatus) {
    NoteExit(reason, exitStatus);
    WriteRecord();
    return exitStatus == 0 && !extras.recordIsKept ? 1 : exitStatus;
}

}  // namespace kaldra
