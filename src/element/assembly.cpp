#include "element/assembly.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "element/element_batches.h"
#include "element/small_matrix.h"
#include "element/system_matrix.h"
#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/memory.h"
#include "platform/narrow.h"
#include "platform/parallel.h"
#include "run/run_state.h"

namespace kaldra {

static std::size_t Elements() { return static_cast<std::size_t>(model.elementCount); }
static std::size_t Nodes() { return static_cast<std::size_t>(model.nodeCount); }

// Forms what is new in the matrix at the present temperatures.
[[nodiscard]] static int AssembleMatrix() {
    bool changed = false;
    if (!CheckElementBatches() || !FormElementMatrices(changed)) return 0;
    if (changed) SumMatrixEntries();
    return IsRunning();
}

int AssembleSteadySystem() {
    if (!IsRunning()) return 0;
    for (std::size_t n = 0; n < Nodes(); ++n) {
        model.SolutionVector[n] = model.EquationCode[n] == equationInactive ? 0.0F : model.nodes[n].bcValue;
    }
    return AssembleMatrix();
}

static float TransientLoad(std::size_t n, float increment) {
    const float value = model.nodes[n].bcValue;
    switch (model.EquationCode[n]) {
        case equationInactive:
            return 0;
        case equationFree:
            return value * increment;
        default:
            return value;  // a prescribed temperature
    }
}

int AssembleTransientSystem() {
    if (!IsRunning()) return 0;
    const float increment = StepIncrement(runState.currentStep);
    constexpr std::size_t nodesPerTask = 16384;
    RunChunks(Nodes(), nodesPerTask, [increment](std::size_t first, std::size_t end) {
        for (std::size_t n = first; n < end; ++n) model.SolutionVector[n] = TransientLoad(n, increment);
    });
    if (!AssembleMatrix()) return 0;
    AddElementLoads();
    return 1;
}

// ---------------------------------------------------------------------------------------------------------------------
// Nodal flows

static bool IsBoundaryNode(std::int32_t node) { return node > 0 && model.nodes[IndexOf(node)].bcType != bcFree; }

// A boundary node with nothing applied takes no flow.
static bool TakesFlow(std::int32_t node) {
    if (!IsBoundaryNode(node)) return false;
    const NodeRec& record = model.nodes[IndexOf(node)];
    return record.bcType != bcNodalFlux || record.bcFunction != 0 || !(std::abs(record.bcValue) < 1e-30F);
}

// What an element feeds into the nodes in its slots: by storage over the step, and by conduction.
struct ElementFlow {
    SlotValues storage{};
    SlotValues conduction{};
};

static void AddElementFlow(const ElementRec& element, const ElementFlow& fed) {
    for (std::size_t i = 0; i < slotCount; ++i) {
        if (!TakesFlow(element.nodes[i])) continue;
        float& flow = model.SolutionVector[IndexOf(element.nodes[i])];
        const double sum = static_cast<double>(fed.storage[i]) + static_cast<double>(fed.conduction[i]);
        flow = Narrow(static_cast<double>(flow) + sum);
    }
}

static ElementFlow FlowOf(std::size_t e) {
    const ElementRec& element = model.elements[e];
    ElementMatrix K;
    ElementMatrix Cap;
    RecordedElementMatrices(e, K, Cap);
    const SlotValues temperature = SlotTemperatures(element, &NodeState::temperature);
    ElementFlow flow;
    MatMul(flow.conduction.data(), K.data(), temperature.data(), slotCount, slotCount, 1);
    if (model.analysisType == transient) {
        SlotValues change = SlotTemperatures(element, &NodeState::previous);
        for (std::size_t i = 0; i < slotCount; ++i) change[i] = temperature[i] - change[i];
        MatScale(Cap.data(), Narrow(InverseIncrement(runState.currentStep)), slotCount, slotCount);
        MatMul(flow.storage.data(), Cap.data(), change.data(), slotCount, slotCount, 1);
    }
    return flow;
}

int FindBoundaryElements() {
    model.boundaryElements.clear();
    for (std::size_t e = 0; e < Elements(); ++e) {
        const ElementRec& element = model.elements[e];
        if (IsNullElement(element) || std::ranges::none_of(element.nodes, IsBoundaryNode)) continue;
        if (!AppendRecord(model.boundaryElements, static_cast<std::int32_t>(e))) return 0;
    }
    return 1;
}

int ComputeNodalFlows() {
    const std::vector<std::int32_t>& elements = model.boundaryElements;
    std::vector<ElementFlow> flows;
    if (!MakeTable(flows, elements.size())) return 0;
    constexpr std::size_t elementsPerTask = 16;
    RunChunks(elements.size(), elementsPerTask, [&](std::size_t first, std::size_t end) {
        for (std::size_t i = first; i < end && IsRunning(); ++i)
            flows[i] = FlowOf(static_cast<std::size_t>(elements[i]));
    });
    if (!IsRunning()) return 0;
    std::ranges::fill(model.SolutionVector, 0.0F);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        AddElementFlow(model.elements[static_cast<std::size_t>(elements[i])], flows[i]);
    }
    return 1;
}

}  // namespace kaldra
