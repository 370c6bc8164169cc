#include <algorithm>
#include <numeric>
#include <span>
#include <tuple>

#include "check/checks.h"
#include "element/element_geometry.h"
#include "run/warnings.h"

namespace kaldra {

namespace {

constexpr std::int32_t lastKnownType = bcUnitFlux;

bool RefersWithin(std::int32_t number, std::int32_t count) { return number >= 0 && number <= count; }

// Numbers 1 to `count` with the line of their row; a row that could not be read is passed over.
template <class Visit>
void ForEachRow(const std::vector<std::int64_t>& lines, Visit visit) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i] != 0) visit(static_cast<std::int32_t>(i) + 1, lines[i]);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Nodes

void CheckReferences(std::int64_t line, std::int32_t number, const NodeRec& node, Findings& findings) {
    if (!RefersWithin(node.bcFunction, model.bFunctionCount)) {
        AddError(findings, line, "node %d names B function %d, and there are %d", number, node.bcFunction,
                 model.bFunctionCount);
    }
    if (!RefersWithin(node.modifierFunction, model.mFunctionCount)) {
        AddError(findings, line, "node %d names M function %d, and there are %d", number, node.modifierFunction,
                 model.mFunctionCount);
    }
}

void CheckBoundary(std::int64_t line, std::int32_t number, const NodeRec& node, bool active, Findings& findings) {
    if (node.bcType > lastKnownType) {
        AddDoubt(findings, line,
                 "node %d has boundary type %d, and 0 (free), 1 (temperature), 2 (flow), 3 (unit flux) "
                 "are known",
                 number, node.bcType);
    }
    if (!active) {
        return AddDoubt(findings, line, "node %d has a boundary condition, but no element that takes part", number);
    }
    if (model.analysisType != steadyState) return;
    if (node.bcFunction != 0) {
        AddError(findings, line, "node %d has a B function, which a steady-state analysis cannot have", number);
    } else if (node.modifierFunction != 0) {
        AddDoubt(findings, line, "node %d has an M function, which a steady-state analysis does not read", number);
    }
}

void CheckNode(std::int64_t line, const NodeRow& row, std::int32_t number, bool active, Findings& findings) {
    const NodeRec& node = row.node;
    if (row.initialFlag != 0 && row.initialFlag != 1) {
        AddDoubt(findings, line, "node %d has the flag %d for its initial temperature, which then does not count",
                 number, row.initialFlag);
    }
    if (model.problemView == viewAxisymmetric && node.x < 0) {
        AddDoubt(findings, line, "node %d lies at the negative radius %s", number, PlainNumber(node.x));
    }
    if (node.bcType == bcFree) {
        if (node.bcFunction == 0 && node.bcValue == 0) return;
        return AddDoubt(findings, line, "node %d is free (type 0), so that its boundary value or function is not read",
                        number);
    }
    CheckReferences(line, number, node, findings);
    CheckBoundary(line, number, node, active, findings);
}

// Which nodes an element has, or an element that takes part.
struct NodeUse {
    std::vector<bool> inElement, active;
};

// An element whose material is not known may take part: its own fault is told elsewhere.
NodeUse FindNodeUse(const ReadLines& lines) {
    NodeUse use;
    use.inElement.resize(static_cast<std::size_t>(model.nodeCount));
    use.active.resize(use.inElement.size());
    for (const ElementRec& element : std::span(model.elements).first(static_cast<std::size_t>(model.elementCount))) {
        const std::int32_t m = element.material;
        const bool known = IsNumberOf(m, model.materialCount) && lines.materials[IndexOf(m)] != 0;
        const bool active = !known || !IsNullElement(element);
        for (const std::int32_t node : element.nodes) {
            if (!IsNumberOf(node, model.nodeCount)) continue;
            use.inElement[IndexOf(node)] = true;
            if (active) use.active[IndexOf(node)] = true;
        }
    }
    return use;
}

// Nodes at one place conduct nothing between them.
void CheckPlaces(const ReadLines& lines, Findings& findings) {
    std::vector<std::int32_t> order;
    ForEachRow(lines.nodes, [&](std::int32_t number, std::int64_t) { order.push_back(number); });
    const auto place = [](std::int32_t number) {
        const NodeRec& node = model.nodes[IndexOf(number)];
        return std::tuple(node.x, node.y);
    };
    std::ranges::stable_sort(order, {}, place);
    for (std::size_t i = 1; i < order.size(); ++i) {
        if (place(order[i]) != place(order[i - 1])) continue;
        AddDoubt(findings, lines.nodes[IndexOf(order[i])], "node %d lies where node %d lies", order[i], order[i - 1]);
    }
}

void CheckNodes(const ReadLines& lines, Findings& findings) {
    const NodeUse use = FindNodeUse(lines);
    ForEachRow(lines.nodes, [&](std::int32_t number, std::int64_t line) {
        const std::size_t n = IndexOf(number);
        CheckNode(line, lines.nodeRows[n], number, use.active[n] || !use.inElement[n], findings);
        if (!use.inElement[n]) AddDoubt(findings, line, "node %d belongs to no element", number);
    });
    CheckPlaces(lines, findings);
}

// ---------------------------------------------------------------------------------------------------------------------
// Elements

bool IsQuadrilateral(const ElementRec& element) { return element.nodes[3] != 0; }

void CheckSlots(std::int64_t line, std::int32_t number, const ElementRec& element, Findings& findings) {
    const std::size_t corners = IsQuadrilateral(element) ? 4 : 3;
    for (std::size_t slot = 0; slot < corners; ++slot) {
        if (element.nodes[slot] != 0 || IsInfinite(element)) continue;
        AddDoubt(findings, line, "element %d has no node at its corner %d", number,
                 static_cast<std::int64_t>(slot) + 1);
    }
    if (corners == 3 && element.nodes[7] != 0) {
        AddDoubt(findings, line, "element %d is a triangle and has a node in slot 8", number);
    }
}

void CheckPointCount(std::int64_t line, std::int32_t number, const ElementRec& element, Findings& findings) {
    const std::int32_t points = element.integrationPoints;
    if (points > 9 || (points > 0 && points != 1 && points != 3 && points != 4 && points != 9)) {
        AddError(findings, line,
                 "element %d has %d integration points: 1 or 3 in a triangle, 4 or 9 in a quadrilateral", number,
                 points);
    } else if (points <= 0) {
        AddDoubt(findings, line, "element %d has no integration points, so that it conducts and stores nothing",
                 number);
    } else if (IsQuadrilateral(element) != (points == 4 || points == 9)) {
        AddDoubt(findings, line, "element %d has %d integration points: 1 or 3 suit a triangle, 4 or 9 a quadrilateral",
                 number, points);
    }
}

void CheckArea(std::int64_t line, std::int32_t number, const ElementRec& element, Findings& findings) {
    const auto points = static_cast<std::size_t>(std::max(element.integrationPoints, 0));
    if (points > largestRule) return;
    ElementCoordinates xy;
    RuleTable rule{};
    GetElementCoordinates(IndexOf(number), xy);
    GetIntegrationRule(rule, points);
    for (std::size_t i = 0; i < points; ++i) {
        PointGeometry at;
        if (ComputePointGeometry(element, xy, rule[i], at)) continue;
        const std::string_view remedy = IsInfinite(element)
                                            ? "check its direction, the pole and its near nodes"
                                            : "number its corners counter-clockwise, and look for nodes out of place";
        return AddError(findings, line, "the area of element %d is zero or negative: %s", number, remedy);
    }
}

bool CheckElementReferences(std::int64_t line, std::int32_t number, const ElementRec& element, Findings& findings) {
    bool sound = IsNumberOf(element.material, model.materialCount);
    if (!sound) {
        AddError(findings, line, "element %d has material %d, and there are %d", number, element.material,
                 model.materialCount);
    }
    for (const std::int32_t node : element.nodes) {
        if (RefersWithin(node, model.nodeCount)) continue;
        AddError(findings, line, "element %d has node %d, and there are %d", number, node, model.nodeCount);
        sound = false;
    }
    return sound;
}

bool NamesANodeTwice(const ElementRec& element) {
    std::vector<std::int32_t> nodes(std::begin(element.nodes), std::end(element.nodes));
    std::erase(nodes, 0);
    std::ranges::sort(nodes);
    return std::ranges::adjacent_find(nodes) != nodes.end();
}

bool NodesWereRead(const ReadLines& lines, const ElementRec& element) {
    return std::ranges::all_of(element.nodes,
                               [&](std::int32_t node) { return node == 0 || lines.nodes[IndexOf(node)] != 0; });
}

void CheckElement(const ReadLines& lines, std::int32_t number, Findings& findings) {
    const std::int64_t line = lines.elements[IndexOf(number)];
    const ElementRec& element = model.elements[IndexOf(number)];
    if (!CheckElementReferences(line, number, element, findings)) return;
    if (element.integrationPoints > 9) return CheckPointCount(line, number, element, findings);
    if (!IsSoundAndActive(element)) return;
    CheckPointCount(line, number, element, findings);
    if (element.thickness <= 0) {
        AddDoubt(findings, line, "element %d has the thickness %s", number, PlainNumber(element.thickness));
    }
    if (NamesANodeTwice(element)) AddDoubt(findings, line, "element %d names a node twice", number);
    CheckSlots(line, number, element, findings);
    if (NodesWereRead(lines, element)) CheckArea(line, number, element, findings);
}

// ---------------------------------------------------------------------------------------------------------------------
// What fixes the temperatures of a steady state

std::size_t RootOf(std::vector<std::size_t>& parent, std::size_t i) {
    while (parent[i] != i) {
        parent[i] = parent[parent[i]];
        i = parent[i];
    }
    return i;
}

// Nodes that active elements join are one body, and one of its nodes has to have a temperature.
void CheckBodies(const ReadLines& lines, Findings& findings) {
    if (model.analysisType != steadyState) return;
    std::vector<std::size_t> parent(static_cast<std::size_t>(model.nodeCount));
    std::iota(parent.begin(), parent.end(), std::size_t{0});
    std::vector<bool> active(parent.size());
    for (const ElementRec& element : std::span(model.elements).first(static_cast<std::size_t>(model.elementCount))) {
        if (!IsSoundAndActive(element) || element.integrationPoints <= 0) continue;
        std::size_t first = parent.size();
        for (const std::int32_t node : element.nodes) {
            if (node == 0) continue;
            active[IndexOf(node)] = true;
            if (first == parent.size()) first = RootOf(parent, IndexOf(node));
            parent[RootOf(parent, IndexOf(node))] = first;
        }
    }
    std::vector<bool> fixed(parent.size());
    for (std::size_t n = 0; n < parent.size(); ++n) {
        if (model.nodes[n].bcType == bcTemperature) fixed[RootOf(parent, n)] = true;
    }
    for (std::size_t n = 0; n < parent.size(); ++n) {
        if (!active[n] || RootOf(parent, n) != n || fixed[n]) continue;
        AddDoubt(
            findings, lines.nodes[n],
            "no node of the body that node %d belongs to has a prescribed temperature, so that its temperatures are "
            "not determined",
            static_cast<std::int64_t>(n) + 1);
    }
}

void CheckElements(const ReadLines& lines, Findings& findings) {
    ForEachRow(lines.elements, [&](std::int32_t number, std::int64_t) { CheckElement(lines, number, findings); });
    if (model.elementCount > 0 && model.materialCount > 0 && std::ranges::none_of(model.elements, IsSoundAndActive)) {
        AddError(findings, lines.keyword[static_cast<std::size_t>(Section::Element)],
                 "no element takes part: none has a material with a K function");
    }
    CheckBodies(lines, findings);
}

// ---------------------------------------------------------------------------------------------------------------------
// Edges

bool IsSideOf(const ElementRec& element, std::int32_t node1, std::int32_t node2) {
    const std::size_t corners = IsQuadrilateral(element) ? 4 : 3;
    for (std::size_t k = 0; k < corners; ++k) {
        const std::int32_t a = element.nodes[k];
        const std::int32_t b = element.nodes[(k + 1) % corners];
        if ((a == node1 && b == node2) || (a == node2 && b == node1)) return true;
    }
    return false;
}

void CheckEdgeFunctions(std::int64_t line, const QBoundaryRec& edge, Findings& findings) {
    if (!RefersWithin(edge.bFunction, model.bFunctionCount)) {
        AddError(findings, line, "the edge names B function %d, and there are %d", edge.bFunction,
                 model.bFunctionCount);
    }
    if (!RefersWithin(edge.modifier, model.mFunctionCount)) {
        AddError(findings, line, "the edge names M function %d, and there are %d", edge.modifier, model.mFunctionCount);
    }
}

void CheckEdge(std::int64_t line, const QBoundaryRec& edge, Findings& findings) {
    CheckEdgeFunctions(line, edge, findings);
    if (!IsNumberOf(edge.element, model.elementCount)) {
        return AddError(findings, line, "the edge has element %d, and there are %d", edge.element, model.elementCount);
    }
    for (const std::int32_t node : {edge.node1, edge.node2}) {
        if (!IsNumberOf(node, model.nodeCount)) {
            return AddError(findings, line, "the edge has node %d, and there are %d", node, model.nodeCount);
        }
        if (model.problemView != viewPlan && model.nodes[IndexOf(node)].bcType != bcUnitFlux) {
            AddDoubt(findings, line, "node %d of the edge is not of type 3, so that it takes none of the flux", node);
        }
    }
    if (!IsSideOf(model.elements[IndexOf(edge.element)], edge.node1, edge.node2)) {
        AddDoubt(findings, line, "nodes %d and %d are no side of element %d", edge.node1, edge.node2, edge.element);
    }
}

void CheckEdges(const ReadLines& lines, Findings& findings) {
    if (model.problemView == viewPlan && model.qBoundaryCount > 0) {
        AddDoubt(findings, lines.edges.front(), "edges do not count in plan view");
    }
    ForEachRow(lines.edges, [&](std::int32_t number, std::int64_t line) {
        CheckEdge(line, model.qBoundaries[IndexOf(number)], findings);
    });
}

}  // namespace

bool IsSoundAndActive(const ElementRec& element) {
    if (!IsNumberOf(element.material, model.materialCount) || IsNullElement(element)) return false;
    return std::ranges::all_of(element.nodes, [](std::int32_t node) { return RefersWithin(node, model.nodeCount); });
}

void CheckMesh(const ReadLines& lines, Findings& findings) {
    CheckNodes(lines, findings);
    CheckElements(lines, findings);
    CheckEdges(lines, findings);
}

}  // namespace kaldra
