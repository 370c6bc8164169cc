#include "element/assembly.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "element/element_matrices.h"
#include "element/small_matrix.h"
#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/narrow.h"
#include "run/run_state.h"

namespace kaldra {

static std::size_t Elements() { return static_cast<std::size_t>(model.elementCount); }
static std::size_t Nodes() { return static_cast<std::size_t>(model.nodeCount); }

// Adds the upper triangle of an element matrix into the store: entry (a, b) for the pairs with node a not above node b.
static void Scatter(const ElementRec& element, const ElementMatrix& matrix) {
    for (std::size_t a = 0; a < slotCount; ++a) {
        const std::int64_t rowNode = element.nodes[a];
        if (rowNode <= 0) continue;
        for (std::size_t b = 0; b < slotCount; ++b) {
            const std::int32_t columnNode = element.nodes[b];
            if (columnNode <= 0) continue;
            const std::int64_t diagonal = model.SkylineColumnPtr[IndexOf(columnNode)];
            const std::int64_t p = rowNode - columnNode + diagonal;
            if (p < 0 || p > diagonal) continue;
            model.SkylineStore[static_cast<std::size_t>(p)] += static_cast<double>(matrix[a * slotCount + b]);
        }
    }
}

// Forms the matrices of every active element at the present temperatures, in order, and hands them to `use`.
template <class Use>
[[nodiscard]] static int ForEachActiveElement(Use use) {
    ElementMatrix K;
    ElementMatrix Cap;
    for (std::size_t e = 0; e < Elements(); ++e) {
        if (!IsRunning()) return 0;
        const ElementRec& element = model.elements[e];
        if (IsNullElement(element)) continue;
        if (!ComputeElementMatrices(e, K, Cap, PointValues::Evaluated)) return 0;
        use(element, K, Cap);
    }
    return 1;
}

int AssembleSteadySystem() {
    std::ranges::fill(model.SkylineStore, 0.0);
    for (std::size_t n = 0; n < Nodes(); ++n) {
        model.SolutionVector[n] = model.EquationCode[n] == equationInactive ? 0.0F : model.nodes[n].bcValue;
    }
    return ForEachActiveElement(
        [](const ElementRec& element, ElementMatrix& K, ElementMatrix&) { Scatter(element, K); });
}

// Adds Cap T old of the element to the right-hand side of its free nodes.
static void AddStoredHeat(const ElementRec& element, const ElementMatrix& Cap) {
    SlotValues load{};
    for (std::size_t i = 0; i < slotCount; ++i) {
        if (element.nodes[i] <= 0) continue;
        for (std::size_t j = 0; j < slotCount; ++j) {
            if (element.nodes[j] <= 0) continue;
            const double old = static_cast<double>(model.nodeStates[IndexOf(element.nodes[j])].previous);
            load[i] = Narrow(static_cast<double>(load[i]) + static_cast<double>(Cap[i * slotCount + j]) * old);
        }
    }
    for (std::size_t i = 0; i < slotCount; ++i) {
        if (element.nodes[i] <= 0) continue;
        const std::size_t n = IndexOf(element.nodes[i]);
        if (model.EquationCode[n] == equationFree) model.SolutionVector[n] += load[i];
    }
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
    const float increment = StepIncrement(runState.currentStep);
    std::ranges::fill(model.SkylineStore, 0.0);
    for (std::size_t n = 0; n < Nodes(); ++n) model.SolutionVector[n] = TransientLoad(n, increment);
    return ForEachActiveElement([increment](const ElementRec& element, ElementMatrix& K, ElementMatrix& Cap) {
        AddStoredHeat(element, Cap);
        MatScale(K.data(), increment, slotCount, slotCount);
        MatAdd(K.data(), Cap.data(), slotCount, slotCount);
        Scatter(element, K);
    });
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

static void AddElementFlow(const ElementRec& element, const ElementMatrix& K, ElementMatrix& Cap) {
    const SlotValues temperature = SlotTemperatures(element, &NodeState::temperature);
    SlotValues conduction;
    MatMul(conduction.data(), K.data(), temperature.data(), slotCount, slotCount, 1);
    SlotValues storage{};
    if (model.analysisType == transient) {
        SlotValues change = SlotTemperatures(element, &NodeState::previous);
        for (std::size_t i = 0; i < slotCount; ++i) change[i] = temperature[i] - change[i];
        MatScale(Cap.data(), Narrow(InverseIncrement(runState.currentStep)), slotCount, slotCount);
        MatMul(storage.data(), Cap.data(), change.data(), slotCount, slotCount, 1);
    }
    for (std::size_t i = 0; i < slotCount; ++i) {
        if (!TakesFlow(element.nodes[i])) continue;
        float& flow = model.SolutionVector[IndexOf(element.nodes[i])];
        const double fed = static_cast<double>(storage[i]) + static_cast<double>(conduction[i]);
        flow = Narrow(static_cast<double>(flow) + fed);
    }
}

int ComputeNodalFlows() {
    std::ranges::fill(model.SolutionVector, 0.0F);
    ElementMatrix K;
    ElementMatrix Cap;
    for (std::size_t e = 0; e < Elements(); ++e) {
        if (!IsRunning()) return 0;
        const ElementRec& element = model.elements[e];
        if (IsNullElement(element) || std::ranges::none_of(element.nodes, IsBoundaryNode)) continue;
        if (!ComputeElementMatrices(e, K, Cap, PointValues::Recorded)) return 0;
        AddElementFlow(element, K, Cap);
    }
    return 1;
}

}  // namespace kaldra
