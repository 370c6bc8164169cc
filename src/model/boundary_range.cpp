#include "model/boundary_range.h"

#include <algorithm>
#include <cmath>

#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/narrow.h"
#include "platform/number_text.h"
#include "run/warnings.h"

namespace kaldra {

namespace {

using Flags = std::vector<bool>;

// The value of the function of such a node is used: a temperature, a nodal flow, in plan view a unit flux.
bool FunctionActs(const NodeRec& node) {
    if (node.bcFunction <= 0) return false;
    if (node.bcType == bcUnitFlux) return model.problemView == viewPlan;
    return node.bcType == bcTemperature || node.bcType == bcNodalFlux;
}

Flags ActiveNodes() {
    Flags active(static_cast<std::size_t>(model.nodeCount));
    for (std::int32_t number = 1; number <= model.elementCount; ++number) {
        const ElementRec& element = model.elements[IndexOf(number)];
        if (IsNullElement(element)) continue;
        for (const std::int32_t node : element.nodes) {
            if (node > 0) active[IndexOf(node)] = true;
        }
    }
    return active;
}

// Which functions are read at the elapsed time. Nodes of types above read them at a fixed argument, or not at all.
Flags FunctionsInUse() {
    Flags used(static_cast<std::size_t>(model.bFunctionCount));
    const Flags active = ActiveNodes();
    for (std::int32_t number = 1; number <= model.nodeCount; ++number) {
        const NodeRec& node = model.nodes[IndexOf(number)];
        if (active[IndexOf(number)] && FunctionActs(node)) used[IndexOf(node.bcFunction)] = true;
    }
    if (model.problemView == viewPlan) return used;
    for (std::int32_t number = 1; number <= model.qBoundaryCount; ++number) {
        const QBoundaryRec& edge = model.qBoundaries[IndexOf(number)];
        const bool atElapsed = model.nodes[IndexOf(edge.node1)].bcType <= bcLastOfElapsed;
        if (edge.bFunction > 0 && atElapsed) used[IndexOf(edge.bFunction)] = true;
    }
    return used;
}

float Argument(const BoundaryFunction& function, std::int32_t step) {
    const float elapsed = ElapsedTime(step);
    if (function.repeat != 1 || function.period == 0) return elapsed;
    return Narrow(std::fmod(static_cast<double>(elapsed), static_cast<double>(function.period)));
}

OutsideRange FindOutside(std::int32_t number, std::int32_t firstStep, std::int32_t lastStep) {
    const BoundaryFunction& function = model.bFunctions[IndexOf(number)];
    OutsideRange outside{number, 0, 0, 0, 0, function.points.front().x, function.points.back().x};
    for (std::int32_t step = firstStep; step <= lastStep; ++step) {
        const float argument = Argument(function, step);
        if (argument >= outside.firstPoint && argument <= outside.lastPoint) continue;
        if (outside.steps++ == 0) {
            outside.firstStep = step;
            outside.lowest = outside.highest = argument;
        }
        outside.lowest = std::min(outside.lowest, argument);
        outside.highest = std::max(outside.highest, argument);
    }
    return outside;
}

}  // namespace

std::vector<OutsideRange> BoundaryFunctionsOutside(std::int32_t startStep) {
    const bool steady = model.analysisType == steadyState;
    const Flags used = FunctionsInUse();
    std::vector<OutsideRange> found;
    for (std::int32_t number = 1; number <= model.bFunctionCount; ++number) {
        if (!used[IndexOf(number)] || model.bFunctions[IndexOf(number)].points.empty()) continue;
        const OutsideRange outside = FindOutside(number, steady ? 0 : startStep, steady ? 0 : model.stepCount);
        if (outside.steps > 0) found.push_back(outside);
    }
    return found;
}

std::string OutsideRangeText(const OutsideRange& outside) {
    const std::string read =
        outside.steps == 1 ? FormatText("at time %s in step %d", PlainNumber(outside.lowest), outside.firstStep)
                           : FormatText("in %d steps from step %d on, at times from %s to %s", outside.steps,
                                        outside.firstStep, PlainNumber(outside.lowest), PlainNumber(outside.highest));
    return FormatText(
        "boundary function %d has points from %s to %s and is read outside them, where it keeps its end "
        "value, %s: add points, or let it repeat",
        outside.function, PlainNumber(outside.firstPoint), PlainNumber(outside.lastPoint), read);
}

}  // namespace kaldra
