#include "post/heat_balance.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "element/assembly.h"
#include "element/element_batches.h"
#include "functions/function_value.h"
#include "model/file_names.h"
#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/memory.h"
#include "platform/narrow.h"
#include "platform/number_text.h"
#include "platform/parallel.h"
#include "post/csv_export.h"
#include "post/output_file.h"
#include "run/run_state.h"
#include "run/warnings.h"

namespace kaldra {

namespace {

constexpr double mostMiss = 0.05;  // of the heat turned over, without a warning

// ---------------------------------------------------------------------------------------------------------------------
// What the ground stores

struct Stored {
    double sensible = 0, latent = 0, counted = 0, turnedOver = 0;

    void operator+=(const Stored& more) {
        sensible += more.sensible;
        latent += more.latent;
        counted += more.counted;
        turnedOver += more.turnedOver;
    }
};

// A point's temperatures as nodal values make them, and their difference before it is rounded.
struct PointTemperatures {
    double old = 0, change = 0;
};

PointTemperatures TemperaturesAt(const ElementRec& element, const SlotValues& N) {
    PointTemperatures t;
    for (std::size_t slot = 0; slot < slotCount; ++slot) {
        if (element.nodes[slot] <= 0) continue;
        const NodeState& node = model.nodeStates[IndexOf(element.nodes[slot])];
        const auto weight = static_cast<double>(N[slot]);
        const auto previous = static_cast<double>(node.previous);
        t.old += weight * previous;
        t.change += weight * (static_cast<double>(node.temperature) - previous);
    }
    return t;
}

// Unfrozen part of the water.
double UnfrozenPart(const MaterialRec& material, double temperature) {
    if (material.waterContentFunction == 0) return 0;
    const PropertyFunction& f = model.sFunctions[IndexOf(material.waterContentFunction)];
    return std::clamp(EvaluateFunction(f.points, Narrow(temperature)), 0.0, 1.0);
}

// The dry heat between two temperatures, which changes its capacity at the freezing point.
double SensibleHeat(const MaterialRec& material, const PointTemperatures& t) {
    const auto freezing = static_cast<double>(model.freezingPoint);
    const auto frozen = static_cast<double>(material.frozenHeatCapacity);
    const auto unfrozen = static_cast<double>(material.unfrozenHeatCapacity);
    const double present = t.old + t.change;
    const bool wasFrozen = t.old <= freezing;
    const bool isFrozen = present <= freezing;
    if (wasFrozen == isFrozen) return (isFrozen ? frozen : unfrozen) * t.change;
    return (isFrozen ? frozen : unfrozen) * (present - freezing) - (wasFrozen ? frozen : unfrozen) * (t.old - freezing);
}

// Change of one point, per volume of ground.
Stored ChangeAt(std::size_t e, std::size_t point, const SlotValues& N) {
    const ElementRec& element = model.elements[e];
    const MaterialRec& material = model.materials[IndexOf(element.material)];
    const PointTemperatures t = TemperaturesAt(element, N);
    Stored change;
    change.sensible = SensibleHeat(material, t);
    change.latent = static_cast<double>(model.latentHeat) * static_cast<double>(material.waterContent) *
                    (UnfrozenPart(material, t.old + t.change) - UnfrozenPart(material, t.old));
    const auto slope = static_cast<double>(PointResultsOf(e).waterSlope[point]);
    change.counted = static_cast<double>(model.latentHeat) * slope * t.change;
    change.turnedOver = 0.5 * std::abs(change.sensible + change.latent);
    return change;
}

void AddScaled(Stored& sum, const Stored& change, double volume) {
    sum += {change.sensible * volume, change.latent * volume, change.counted * volume, change.turnedOver * volume};
}

Stored ElementChange(std::size_t e) {
    Stored sum;
    for (std::size_t i = 0; i < PointCount(e); ++i) {
        const PointShape at = ShapeAtPoint(e, i);
        AddScaled(sum, ChangeAt(e, i, at.N), static_cast<double>(at.weight) * static_cast<double>(at.depth));
    }
    return sum;
}

// The sum has one order for any number of threads.
[[nodiscard]] int StoredHeat(Stored& sum) {
    constexpr std::size_t elementsPerTask = 512;
    const auto elements = static_cast<std::size_t>(model.elementCount);
    std::vector<Stored> parts;
    if (!MakeTable(parts, elements / elementsPerTask + 1)) return 0;
    RunChunks(elements, elementsPerTask, [&](std::size_t first, std::size_t end) {
        for (std::size_t e = first; e < end; ++e) {
            if (!IsNullElement(model.elements[e])) parts[first / elementsPerTask] += ElementChange(e);
        }
    });
    for (const Stored& part : parts) sum += part;
    return 1;
}

// ---------------------------------------------------------------------------------------------------------------------
// What came through the boundary

[[nodiscard]] int FindGivenByFunction(HeatBalance& balance) {
    return WithMemory(static_cast<std::size_t>(model.nodeCount), [&] {
        std::vector<bool>& given = balance.givenByFunction;
        given.assign(static_cast<std::size_t>(model.nodeCount), false);
        for (std::size_t n = 0; n < given.size(); ++n) given[n] = model.nodes[n].bcFunction != 0;
        if (model.problemView == viewPlan) return;
        for (std::size_t i = 0; i < static_cast<std::size_t>(model.qBoundaryCount); ++i) {
            const QBoundaryRec& edge = model.qBoundaries[i];
            if (edge.bFunction <= 0) continue;
            for (const std::int32_t node : {edge.node1, edge.node2, edge.sideNode}) {
                if (node > 0 && model.nodes[IndexOf(node)].bcType == bcUnitFlux) given[IndexOf(node)] = true;
            }
        }
    });
}

void AddBoundary(StepBalance& step, const HeatBalance& balance) {
    const double duration = model.analysisType == transient ? static_cast<double>(StepIncrement(step.step)) : 1;
    for (std::size_t n = 0; n < static_cast<std::size_t>(model.nodeCount); ++n) {
        const NodeRec& node = model.nodes[n];
        const std::int32_t code = model.EquationCode[n];
        if (code == equationInactive || node.bcType == bcFree) continue;
        const bool prescribed = code == equationPrescribed;
        const double heat = duration * static_cast<double>(prescribed ? model.SolutionVector[n] : node.bcValue);
        const bool onEdges = node.bcType == bcUnitFlux;
        (prescribed ? step.atTemperatures : onEdges ? step.unitFluxes : step.nodalFlows) += heat;
        if (balance.givenByFunction[n]) step.byFunctions += heat;
        step.turnedOver += 0.5 * std::abs(heat);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Texts

void AppendBalanceRow(std::string& rows, const std::string& step, const StepBalance& b) {
    rows += step + ',';
    AppendNumber(rows, b.elapsed);
    for (const double value : {b.atTemperatures, b.nodalFlows, b.unitFluxes, b.byFunctions, b.In(), b.sensible,
                               b.latent, b.latentCounted, b.Stored(), b.Residual(), b.turnedOver, b.Miss()}) {
        rows += ',';
        AppendNumber(rows, Narrow(value));
    }
    rows += '\n';
}

std::string PerCent(double part) { return FormatText("%.2f %%", 100 * part); }

// What the equations counted by what froze or thawed, over the steps that miss.
std::string CauseText(const HeatBalance& balance, const std::vector<std::int32_t>& steps) {
    double counted = 0;
    double latent = 0;
    double residual = 0;
    for (const StepBalance& step : balance.steps) {
        if (!std::ranges::binary_search(steps, step.step)) continue;
        counted += step.latentCounted;
        latent += step.latent;
        residual += step.Residual();
    }
    const bool isLatent = std::abs(counted - latent) > 0.5 * std::abs(residual);
    if (!isLatent || std::abs(counted) < std::abs(latent)) {
        return "take smaller steps there, and see that every step converges";
    }
    return FormatText(
        "there the staged latent heat was counted more than once, %s where the ground took %s: take smaller steps, or "
        "let "
        "fewer points freeze or thaw at a time (phase points, now %d)",
        PlainNumber(Narrow(counted)), PlainNumber(Narrow(latent)), model.maxPhasePoints);
}

}  // namespace

int AddStepBalance(HeatBalance& balance) {
    if (runState.saveStep != 1 && !ComputeNodalFlows()) return IsRunning() == 0;  // saved steps have formed them
    if (balance.steps.empty() && !FindGivenByFunction(balance)) return 0;
    StepBalance step;
    step.step = runState.currentStep;
    step.elapsed = ElapsedTime(step.step);
    AddBoundary(step, balance);
    Stored stored;
    if (model.analysisType == transient && !StoredHeat(stored)) return 0;
    step.sensible = stored.sensible;
    step.latent = stored.latent;
    step.latentCounted = stored.counted;
    step.turnedOver += stored.turnedOver;
    return AppendRecord(balance.steps, step);
}

StepBalance SumOf(const HeatBalance& balance) {
    StepBalance sum;
    for (const StepBalance& step : balance.steps) {
        sum.step = step.step;
        sum.elapsed = step.elapsed;
        sum.atTemperatures += step.atTemperatures;
        sum.nodalFlows += step.nodalFlows;
        sum.unitFluxes += step.unitFluxes;
        sum.byFunctions += step.byFunctions;
        sum.sensible += step.sensible;
        sum.latent += step.latent;
        sum.latentCounted += step.latentCounted;
        sum.turnedOver += step.turnedOver;
    }
    return sum;
}

std::string BalanceName() { return ReplaceExtension(model.dataFileName, ".balance.csv"); }

int WriteBalance(const HeatBalance& balance) {
    std::string rows = UnitLine() +
                       "step,time,in_at_temperatures,in_by_nodal_flows,in_by_unit_fluxes,of_these_by_functions,in,"
                       "stored_sensible,stored_latent,latent_counted,stored,residual,turned_over,relative_residual\n";
    for (const StepBalance& step : balance.steps) AppendBalanceRow(rows, FormatText("%d", step.step), step);
    AppendBalanceRow(rows, "sum", SumOf(balance));
    return WriteOutput(BalanceName(), rows);
}

std::string BalanceSentence(const HeatBalance& balance) {
    const StepBalance sum = SumOf(balance);
    return "Heat balance: " + PlainNumber(Narrow(sum.In())) + " came in, " + PlainNumber(Narrow(sum.Stored())) +
           " is stored, residual " + PlainNumber(Narrow(sum.Residual())) + " (" + PerCent(sum.Miss()) +
           " of the heat turned over).";
}

void WarnOfBalance(const HeatBalance& balance) {
    const StepBalance sum = SumOf(balance);
    if (std::abs(sum.Miss()) <= mostMiss) return;
    std::vector<std::int32_t> steps;
    for (const StepBalance& step : balance.steps) {
        if (step.Miss() * sum.Miss() > 0 && std::abs(step.Miss()) > mostMiss) steps.push_back(step.step);
    }
    const bool steady = model.analysisType == steadyState;
    WarnOfLine(model.dataFileName, model.convergeLine,
               "the heat balance misses by " + PerCent(std::abs(sum.Miss())) + " of the heat turned over" +
                   (steady ? ": raise maxIterations or lower the tolerance"
                           : ", in steps " + NumberRanges(steps) + ": " + CauseText(balance, steps)));
}

std::string NumberRanges(const std::vector<std::int32_t>& numbers) {
    constexpr int mostRanges = 8;
    std::string text;
    int ranges = 0;
    for (std::size_t first = 0; first < numbers.size();) {
        std::size_t last = first;
        while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1) ++last;
        if (ranges++ == mostRanges) {
            return text + FormatText(" and %d more", static_cast<std::int64_t>(numbers.size() - first));
        }
        if (!text.empty()) text += ", ";
        text += FormatText("%d", numbers[first]);
        if (last > first) text += FormatText("-%d", numbers[last]);
        first = last + 1;
    }
    return text;
}

}  // namespace kaldra
