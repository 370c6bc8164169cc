#include "convergence/convergence_monitor.h"

#include <cmath>
#include <string>
#include <vector>

#include "convergence/convergence_file.h"
#include "convergence/graph_memory.h"
#include "model/problem_model.h"
#include "platform/narrow.h"
#include "platform/number_text.h"
#include "run/front_end.h"
#include "run/messages.h"
#include "run/run_state.h"
#include "run/warnings.h"

namespace kaldra {

ConvergenceMeasure convergence;

static constexpr float firstChange = 1000.0F;

// Sum of the squared temperatures of all nodes with an equation, prescribed ones included.
static float SumOfSquares() {
    double sum = 0;
    for (std::size_t n = 0; n < static_cast<std::size_t>(model.nodeCount); ++n) {
        if (model.EquationCode[n] == equationInactive) continue;
        const double temperature = static_cast<double>(model.nodeStates[n].temperature);
        sum += temperature * temperature;
    }
    return Narrow(sum);
}

static float PercentChange(float norm, float previous) {
    const double last = static_cast<double>(previous);
    return Narrow(std::abs(static_cast<double>(norm) - last) / last * 100);
}

static bool IsFirstOfRun() {
    return runState.iteration == 1 && (runState.currentStep == 0 || runState.currentStep == runState.startStep);
}

// The lines of this iteration: one for the status list, the others for the file.
struct IterationLines {
    std::string status;
    std::vector<std::string> file;
};

static IterationLines FormatLines(float norm, float change) {
    const std::int32_t step = runState.currentStep;
    const std::int32_t iteration = runState.iteration;
    if (iteration == 1) {
        return {FormatText("%5d\t%d\t%11.6E", step, iteration, norm),
                {"   ", FormatText(" StepNum: %5d ItNum: %5d Vector Norm: %12.6E", step, iteration, norm)}};
    }
    return {
        FormatText("%5d\t%d\t%11.6E\t%11.4E", step, iteration, norm, change),
        {FormatText(" StepNum: %5d ItNum: %5d Vector Norm: %12.6E %%Change: %12.4E ", step, iteration, norm, change)}};
}

[[nodiscard]] static int RecordIteration(float norm, float change) {
    File file;
    if (!OpenConvergenceFile(file)) return 0;
    const IterationLines lines = FormatLines(norm, change);
    frontEnd.AppendStatus(lines.status);
    return AppendConvergenceLines(file, lines.file);
}

int MonitorConvergence() {
    if (IsFirstOfRun() && !CreateConvergenceFile()) return -1;
    const float sum = SumOfSquares();
    if (!std::isfinite(sum)) {
        ShowError(1136);
        return -1;
    }
    const float previous = convergence.ConvergenceNorm;
    const float norm = Narrow(std::sqrt(static_cast<double>(sum)) + 1.0);
    convergence.ConvergenceNorm = norm;
    convergence.change = runState.iteration == 1 ? firstChange : PercentChange(norm, previous);

    bool redrawDue = false;
    if (!StoreGraphPoint(runState.iteration, static_cast<double>(norm), redrawDue)) {
        WarnOfBrokenFile(ConvergencePath);  // it lacks this iteration
        return 0;
    }
    if (redrawDue) frontEnd.GraphDataReady();

    if (!RecordIteration(norm, convergence.change)) return -1;
    frontEnd.IterationDone();
    if (convergence.change >= model.tolerance) return 0;
    if (runState.PhaseChangeMode == phaseEstablished) runState.PhaseChangeMode = phaseEnded;
    return 1;
}

}  // namespace kaldra
