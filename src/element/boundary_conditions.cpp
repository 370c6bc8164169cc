#include "element/boundary_conditions.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "element/element_geometry.h"
#include "element/element_matrices.h"
#include "element/small_matrix.h"
#include "functions/function_value.h"
#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/narrow.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

static NodeRec& NodeAt(std::int32_t number) { return model.nodes[IndexOf(number)]; }

// ---------------------------------------------------------------------------------------------------------------------
// Functions

static float BoundaryArgument(const BoundaryFunction& function) {
    const float elapsed = ElapsedTime(runState.currentStep);
    if (function.repeat != 1 || function.period == 0) return elapsed;
    return Narrow(std::fmod(static_cast<double>(elapsed), static_cast<double>(function.period)));
}

int BoundaryFunctionValue(std::int32_t node, std::int32_t function, float& out) {
    const BoundaryFunction& f = model.bFunctions[IndexOf(function)];
    const std::int32_t type = NodeAt(node).bcType;
    if (type <= bcLastOfElapsed) {
        out = Narrow(EvaluateFunction(f.points, BoundaryArgument(f)));
    } else if (type <= bcLastOfFixed) {
        out = Narrow(EvaluateFunction(f.points, f.fixedArgument));
    }
    return 1;
}

int ModifierFactor(std::int32_t node, std::int32_t function, float& out) {
    const float previous = model.nodeStates[IndexOf(node)].previous;
    out = Narrow(EvaluateFunction(model.mFunctions[IndexOf(function)].points, previous));
    return 1;
}

// ---------------------------------------------------------------------------------------------------------------------
// Applied fluxes

static bool IsUnitFluxType(std::int32_t type) { return type == bcUnitFlux || type == bcUnitFluxAlso; }

static void ApplyAreaFluxes() {
    for (std::int32_t number = 1; number <= model.nodeCount; ++number) {
        NodeRec& node = NodeAt(number);
        if (!IsUnitFluxType(node.bcType)) continue;
        float flux = node.bcInput;
        if (node.bcFunction != 0) {
            flux = 0;
            BoundaryFunctionValue(number, node.bcFunction, flux);
        }
        node.qApplied = flux * node.nodalArea;
    }
}

// Nodal loads of a unit flux of 1 on an edge: at node1, node2 and the side node.
struct EdgeFactors {
    float f1, f2, f3;
};

static EdgeFactors FactorsOf(const QBoundaryRec& edge) {
    const NodeRec& n1 = NodeAt(edge.node1);
    const NodeRec& n2 = NodeAt(edge.node2);
    const double r1 = static_cast<double>(n1.x);
    const double r2 = static_cast<double>(n2.x);
    const double dx = r2 - r1;
    const double dy = static_cast<double>(n2.y) - static_cast<double>(n1.y);
    const double length = std::sqrt(dx * dx + dy * dy);
    const double t = static_cast<double>(model.elements[IndexOf(edge.element)].thickness);
    const bool hasSideNode = edge.sideNode > 0;
    if (model.problemView != viewAxisymmetric) {
        if (!hasSideNode) return {Narrow(length * t / 2), Narrow(length * t / 2), 0};
        return {Narrow(length * t / 6), Narrow(length * t / 6), Narrow(4 * length * t / 6)};
    }
    if (!hasSideNode) {
        return {Narrow((2 * r1 + r2) * t * length / 6), Narrow((2 * r2 + r1) * t * length / 6), 0};
    }
    return {Narrow(r1 * t * length / 6), Narrow(r2 * t * length / 6), Narrow((r1 + r2) * t * length / 3)};
}

static void AddEdgeLoad(std::int32_t node, const QBoundaryRec& edge, float flux, float factor) {
    float m = 1;
    if (edge.modifier > 0) ModifierFactor(node, edge.modifier, m);
    float& q = NodeAt(node).qApplied;
    q = Narrow(static_cast<double>(q) +
               static_cast<double>(m) * static_cast<double>(flux) * static_cast<double>(factor));
}

static void ApplyEdgeFlux(const QBoundaryRec& edge) {
    const EdgeFactors factors = FactorsOf(edge);
    float flux = edge.q;
    if (edge.bFunction > 0) BoundaryFunctionValue(edge.node1, edge.bFunction, flux);
    AddEdgeLoad(edge.node1, edge, flux, factors.f1);
    AddEdgeLoad(edge.node2, edge, flux, factors.f2);
    if (edge.sideNode > 0) AddEdgeLoad(edge.sideNode, edge, flux, factors.f3);
}

int BuildBoundaryFluxes() {
    for (NodeRec& node : model.nodes) node.qApplied = 0;
    if (model.problemView == viewPlan) {
        ApplyAreaFluxes();
        return 1;
    }
    for (std::int32_t i = 1; i <= model.qBoundaryCount; ++i) ApplyEdgeFlux(model.qBoundaries[IndexOf(i)]);
    return 1;
}

// ---------------------------------------------------------------------------------------------------------------------
// Boundary values

static bool IsInactive(std::int32_t number) { return model.EquationCode[IndexOf(number)] == equationInactive; }

static int PrepareSteadyValues() {
    for (std::int32_t number = 1; number <= model.nodeCount; ++number) {
        NodeRec& node = NodeAt(number);
        if (IsInactive(number)) continue;
        if (node.bcFunction != 0) return ShowError(1029);
        node.bcValue = node.bcType == bcUnitFlux ? node.qApplied : node.bcInput;
    }
    return 1;
}

// The node's own modifier; that of a unit flux acts on its edges, except in plan view, which has none.
static float NodeModifier(std::int32_t number) {
    const NodeRec& node = NodeAt(number);
    float m = 1;
    const bool onEdges = node.bcType == bcUnitFlux && model.problemView != viewPlan;
    if (node.modifierFunction > 0 && !onEdges) ModifierFactor(number, node.modifierFunction, m);
    return m;
}

static void PrepareNode(std::int32_t number) {
    NodeRec& node = NodeAt(number);
    std::int32_t& code = model.EquationCode[IndexOf(number)];
    const float m = NodeModifier(number);
    float b = 0;
    if (node.bcFunction != 0) BoundaryFunctionValue(number, node.bcFunction, b);
    switch (node.bcType) {
        case bcTemperature: {
            // The modifier scales the distance from the freezing point, not the temperature.
            const double freezing = static_cast<double>(model.freezingPoint);
            const double modified = (static_cast<double>(b) - freezing) * static_cast<double>(m) + freezing;
            code = equationPrescribed;
            node.bcValue = node.bcFunction != 0 ? Narrow(modified) : node.bcInput;
            break;
        }
        case bcNodalFlux:
            code = equationFree;
            node.bcValue = node.bcFunction != 0 ? b * m : node.bcInput;
            break;
        case bcUnitFlux:
            code = equationFree;
            node.bcValue = model.problemView == viewPlan ? m * node.qApplied : node.qApplied;
            break;
        default:  // any other type keeps the value of the data file
            break;
    }
}

int PrepareBoundaryValues() {
    if (!BuildBoundaryFluxes()) return ShowError(1028);
    if (model.analysisType == steadyState) return PrepareSteadyValues();
    for (std::int32_t number = 1; number <= model.nodeCount; ++number) {
        if (!IsInactive(number)) PrepareNode(number);
    }
    return 1;
}

// ---------------------------------------------------------------------------------------------------------------------
// Once per run

// Node in the slot of the side that joins two corners of the element, 0 where they are no side of it.
static std::int32_t SideNodeBetween(const ElementRec& element, std::int32_t node1, std::int32_t node2) {
    const std::size_t corners = element.nodes[3] > 0 ? 4 : 3;
    for (std::size_t k = 0; k < corners; ++k) {
        if (element.nodes[k] != node1) continue;
        const std::size_t next = (k + 1) % corners;
        const std::size_t before = (k + corners - 1) % corners;
        if (element.nodes[next] == node2) return element.nodes[4 + k];
        if (element.nodes[before] == node2) return element.nodes[4 + before];
    }
    return 0;
}

int FindQBoundaryElements() {
    for (std::int32_t i = 1; i <= model.qBoundaryCount; ++i) {
        QBoundaryRec& edge = model.qBoundaries[IndexOf(i)];
        edge.sideNode = SideNodeBetween(model.elements[IndexOf(edge.element)], edge.node1, edge.node2);
    }
    return 1;
}

static bool HasConductivity(const ElementRec& element) {
    if (IsNullElement(element)) return false;
    const MaterialRec& material = model.materials[IndexOf(element.material)];
    return model.kFunctions[IndexOf(material.conductivityFunction)].pointCount != 0;
}

static bool IsUnitFluxNode(std::int32_t number) { return number > 0 && IsUnitFluxType(NodeAt(number).bcType); }

// Consistent mass matrix of the element's area, without depth. Gives false where the area is zero or negative.
[[nodiscard]] static bool FormAreaMatrix(std::size_t e, ElementMatrix& A) {
    const ElementRec& element = model.elements[e];
    const std::size_t points = PointCount(e);
    ElementCoordinates xy;
    RuleTable rule;
    GetElementCoordinates(e, xy);
    GetIntegrationRule(rule, points);
    MatZero(A.data(), slotCount, slotCount);
    for (std::size_t i = 0; i < points; ++i) {
        PointGeometry at;
        if (!ComputePointGeometry(element, xy, rule[i], at)) return false;
        ElementMatrix atPoint;
        VecOuter(atPoint.data(), at.N.data(), at.N.data(), slotCount);
        const double area = static_cast<double>(at.determinant);
        const float weight = Narrow(area * static_cast<double>(rule[i].ws) * static_cast<double>(rule[i].wr));
        MatScale(atPoint.data(), weight, slotCount, slotCount);
        MatAdd(A.data(), atPoint.data(), slotCount, slotCount);
    }
    return true;
}

static void AddLumpedAreas(const ElementRec& element, const ElementMatrix& A) {
    double total = 0;
    double diagonal = 0;
    for (const float entry : A) total += static_cast<double>(entry);
    for (std::size_t i = 0; i < slotCount; ++i) diagonal += static_cast<double>(A[i * slotCount + i]);
    const double quotient = total / diagonal;
    for (std::size_t i = 0; i < slotCount; ++i) {
        if (!IsUnitFluxNode(element.nodes[i])) continue;
        NodeAt(element.nodes[i]).nodalArea += Narrow(static_cast<double>(A[i * slotCount + i]) * quotient);
    }
}

int ComputeNodalAreas() {
    for (NodeRec& node : model.nodes) node.nodalArea = 0;
    for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
        if (!IsRunning()) return 0;
        const ElementRec& element = model.elements[e];
        if (PointCount(e) == 0 || std::ranges::none_of(element.nodes, IsUnitFluxNode)) continue;
        if (!HasConductivity(element)) continue;
        ElementMatrix A;
        if (!FormAreaMatrix(e, A)) return ShowBadArea(e, 1194, 1195);
        AddLumpedAreas(element, A);
    }
    return 1;
}

}  // namespace kaldra
