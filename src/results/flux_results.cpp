#include "results/flux_results.h"

#include "element/element_batches.h"
#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/narrow.h"
#include "platform/number_text.h"
#include "results/result_file.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

namespace {

std::size_t Sections() { return static_cast<std::size_t>(model.fluxSectionCount); }

void AddTo(float& sum, double term) { sum = Narrow(static_cast<double>(sum) + term); }

// Adds the exchange between one node left of the section and one right of it.
void AddExchange(FluxCrossing& crossing, std::int32_t left, std::int32_t right, float k, float cap) {
    const NodeState& i = model.nodeStates[IndexOf(left)];
    const NodeState& j = model.nodeStates[IndexOf(right)];
    const double ti = static_cast<double>(i.temperature);
    const double tj = static_cast<double>(j.temperature);
    AddTo(crossing.heatFlux, static_cast<double>(Narrow((ti - tj) * static_cast<double>(k))));
    if (model.analysisType != transient) return;
    const double change = (ti + tj) * 0.5 - (static_cast<double>(i.previous) + static_cast<double>(j.previous)) * 0.5;
    AddTo(crossing.storage, change * static_cast<double>(cap) * InverseIncrement(runState.currentStep));
}

void ComputeCrossing(FluxCrossing& crossing) {
    crossing.heatFlux = 0;
    crossing.storage = 0;
    const std::size_t e = IndexOf(crossing.element);
    if (IsNullElement(model.elements[e])) return;
    ElementMatrix K;
    ElementMatrix Cap;
    RecordedElementMatrices(e, K, Cap);
    for (std::size_t i = 0; i < slotCount; ++i) {
        if (crossing.leftNodes[i] <= 0) continue;
        for (std::size_t j = 0; j < slotCount; ++j) {
            if (crossing.rightNodes[j] <= 0) continue;
            const std::size_t entry = i * slotCount + j;
            AddExchange(crossing, crossing.leftNodes[i], crossing.rightNodes[j], K[entry], Cap[entry]);
        }
    }
}

// A flow that runs from right to left takes its storage with it. The changed sign stays in the crossing.
void SumSection(FluxResult& result) {
    result.heatFlux = 0;
    result.storage = 0;
    for (FluxCrossing& crossing : result.crossings) {
        if (crossing.heatFlux > 0) crossing.storage = -crossing.storage;
        result.heatFlux += crossing.heatFlux;
        result.storage += crossing.storage;
    }
}

double Total(float heatFlux, float storage) { return static_cast<double>(heatFlux) + static_cast<double>(storage); }

// A section's flow prints as a positive number whichever way it runs.
[[nodiscard]] bool WriteSummary(File& file) {
    for (std::size_t s = 0; s < Sections(); ++s) {
        const FluxResult& result = model.fluxResults[s];
        const bool reversed = result.heatFlux < 0;
        const float heatFlux = reversed ? -result.heatFlux : result.heatFlux;
        const float storage = reversed ? -result.storage : result.storage;
        const std::string line = FormatText("Section %5d :  %12.4E %13.4E %13.4E", RowNumber(s),
                                            Total(heatFlux, storage), heatFlux, storage);
        if (WriteBuffered(file, line) != 1 || WriteBuffered(file, "  ") != 1) return false;
    }
    return true;
}

[[nodiscard]] bool WriteCrossings(File& file) {
    for (std::size_t s = 0; s < Sections() && IsRunning(); ++s) {
        for (const FluxCrossing& crossing : model.fluxResults[s].crossings) {
            const std::string line =
                FormatText("%4d %8d %+15.4E %+13.4E %+13.4E", RowNumber(s), crossing.element,
                           Total(crossing.heatFlux, crossing.storage), crossing.heatFlux, crossing.storage);
            if (WriteBuffered(file, line) != 1) return false;
        }
    }
    return true;
}

[[nodiscard]] bool WriteContent(File& file) {
    const std::string rule(57, '=');
    const std::array<std::string, 4> summary{"  ", "Flux Summary Data:   Total       Heat_Flux     Storage", rule,
                                             "  "};
    const std::array<std::string, 2> elements{"Section  Element     Total       Heat_Flux     Storage", rule};
    return WriteLines(file, CommonHeader()) && WriteLines(file, summary) && WriteSummary(file) &&
           WriteLines(file, elements) && WriteCrossings(file);
}

// A line that cannot be written shortens this file and does not stop the run, unlike in the other result files.
[[nodiscard]] int WriteFluxResults() {
    File file;
    if (!file.Create(StepFileName('j'))) return ShowError(1026);
    (void)WriteContent(file);
    if (WriteBuffered(file, clearbuf) != 1) {
        ShowError(1193);
        (void)file.Close();
        return 0;
    }
    return file.Close() ? 1 : ShowError(1039);
}

}  // namespace

int ComputeFluxResults() {
    if (Sections() == 0) return 1;
    for (std::size_t s = 0; s < Sections(); ++s) {
        for (FluxCrossing& crossing : model.fluxResults[s].crossings) ComputeCrossing(crossing);
    }
    for (std::size_t s = 0; s < Sections(); ++s) SumSection(model.fluxResults[s]);
    return WriteFluxResults();
}

}  // namespace kaldra
