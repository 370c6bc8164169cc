#include "view/scene.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "element/element_geometry.h"
#include "platform/memory.h"
#include "platform/narrow.h"
#include "post/local_point.h"
#include "post/result_set.h"

namespace kaldra {

namespace {

constexpr float shownOfInfinity = 0.1F;  // of the longer extent of the finite mesh

Slots SlotsOf(const SceneCell& cell) { return model.elements[cell.element].nodes; }

std::int32_t SidesOf(const ElementRec& element) {
    if (element.nodes[3] > 0) return 4;
    if (element.nodes[2] > 0) return 3;
    return element.nodes[0] > 0 && element.nodes[1] > 0 ? 1 : 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Positions

float Interpolated(const SlotValues& N, const ElementRec& element, std::span<const float> temperatures) {
    float value = 0;
    for (std::size_t slot = 0; slot < slotCount; ++slot) {
        if (element.nodes[slot] > 0) value += N[slot] * temperatures[IndexOf(element.nodes[slot])];
    }
    return value;
}

ScenePoint FinitePosition(const ElementRec& element, const SlotValues& N) {
    ScenePoint at;
    for (std::size_t slot = 0; slot < slotCount; ++slot) {
        if (element.nodes[slot] <= 0) continue;
        const NodeRec& node = model.nodes[IndexOf(element.nodes[slot])];
        at.x += N[slot] * node.x;
        at.y += N[slot] * node.y;
    }
    return at;
}

ScenePoint InfinitePosition(const SceneCell& cell, const std::array<float, 2>& local) {
    const LocalPoint at = PointAt(cell.element, static_cast<double>(local[0]), static_cast<double>(local[1]));
    return {Narrow(at.x), Narrow(at.y), 0};
}

// The local coordinate at which the mapping is `reach` beyond the near side, `away` from the pole.
float LocalEnd(float away, float reach) {
    const float distance = std::abs(away);
    return distance > 0 && reach > 0 ? (reach - distance) / (reach + distance) : -1;
}

// ---------------------------------------------------------------------------------------------------------------------
// Cells

void SetBounds(SceneCell& cell, const ElementRec& element) {
    bool first = true;
    const std::size_t slots = cell.kind == SceneKind::Infinite ? 0 : slotCount;
    for (std::size_t slot = 0; slot < slots; ++slot) {
        if (element.nodes[slot] <= 0) continue;
        const NodeRec& node = model.nodes[IndexOf(element.nodes[slot])];
        if (first) cell.left = cell.right = node.x, cell.bottom = cell.top = node.y;
        first = false;
        cell.left = std::min(cell.left, node.x);
        cell.right = std::max(cell.right, node.x);
        cell.bottom = std::min(cell.bottom, node.y);
        cell.top = std::max(cell.top, node.y);
    }
}

// A side node may pull an edge out beyond its nodes, by no more than a quarter of the cell.
void WidenBounds(SceneCell& cell) {
    const float width = cell.right - cell.left;
    const float height = cell.top - cell.bottom;
    cell.left -= width / 4;
    cell.right += width / 4;
    cell.bottom -= height / 4;
    cell.top += height / 4;
}

// False for an element that nothing maps.
bool SetInfinity(SceneCell& cell, const ElementRec& element, float reach) {
    const bool alongX = element.infiniteR != 0;
    const bool both = alongX && element.infiniteS != 0;
    const std::int32_t* const nodes = element.nodes;
    if (cell.sides != 4 || (!both && (nodes[1] <= 0 || nodes[5] <= 0))) return false;
    const NodeRec& near = model.nodes[IndexOf(nodes[2])];
    const float a = near.x - model.poleX;
    const float b = near.y - model.poleY;
    const bool rAlongX = both ? element.infiniteR == element.infiniteS : alongX;
    cell.rEnd = LocalEnd(rAlongX ? a : b, reach);
    cell.sEnd = both ? LocalEnd(rAlongX ? b : a, reach) : 1;
    cell.openSides = both ? 0b1001U : 0b1000U;
    return cell.rEnd > -1 && cell.sEnd > -1;
}

[[nodiscard]] int AddCell(Scene& scene, std::size_t e, float reach) {
    const ElementRec& element = model.elements[e];
    SceneCell cell;
    cell.element = e;
    cell.takesPart = !IsNullElement(element);
    cell.kind = IsInfinite(element) ? SceneKind::Infinite : cell.takesPart ? SceneKind::Active : SceneKind::Null;
    cell.sides = SidesOf(element);
    if (cell.sides == 0) return 1;
    if (cell.kind == SceneKind::Infinite && !SetInfinity(cell, element, reach)) return 1;
    SetBounds(cell, element);
    return AppendRecord(scene.cells, cell);
}

void SetInfiniteBounds(Scene& scene, SceneCell& cell) {
    std::vector<ScenePoint> points;
    PlaceGrid(scene, cell, GridOf(scene, cell, 4), points);
    const auto [left, right] = std::ranges::minmax(points, {}, &ScenePoint::x);
    const auto [bottom, top] = std::ranges::minmax(points, {}, &ScenePoint::y);
    cell.left = left.x;
    cell.right = right.x;
    cell.bottom = bottom.y;
    cell.top = top.y;
}

void TakeBounds(Scene& scene, bool infinite) {
    for (const SceneCell& cell : scene.cells) {
        if ((cell.kind == SceneKind::Infinite) != infinite) continue;
        scene.left = std::min(scene.left, cell.left);
        scene.right = std::max(scene.right, cell.right);
        scene.bottom = std::min(scene.bottom, cell.bottom);
        scene.top = std::max(scene.top, cell.top);
    }
}

// The reach of infinite elements, from the extent of the finite ones.
float ReachOfInfinity() {
    constexpr float far = std::numeric_limits<float>::max();
    float left = far, right = -far, bottom = far, top = -far;
    for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
        const ElementRec& element = model.elements[e];
        if (IsInfinite(element)) continue;
        for (const std::int32_t node : element.nodes) {
            if (node <= 0) continue;
            left = std::min(left, model.nodes[IndexOf(node)].x);
            right = std::max(right, model.nodes[IndexOf(node)].x);
            bottom = std::min(bottom, model.nodes[IndexOf(node)].y);
            top = std::max(top, model.nodes[IndexOf(node)].y);
        }
    }
    return left > right ? 1 : shownOfInfinity * std::max(right - left, top - bottom);
}

// ---------------------------------------------------------------------------------------------------------------------
// Borders: sides that no second element of the same material has

struct KeyedSide {
    std::pair<std::int32_t, std::int32_t> nodes;
    SceneSide side;
};

std::int32_t MaterialOf(const Scene& scene, const SceneSide& side) {
    return model.elements[scene.cells[side.cell].element].material;
}

[[nodiscard]] int ListSides(const Scene& scene, std::vector<KeyedSide>& sides) {
    for (std::size_t c = 0; c < scene.cells.size(); ++c) {
        const SceneCell& cell = scene.cells[c];
        const Slots nodes = SlotsOf(cell);
        for (std::int32_t i = 0; i < cell.sides; ++i) {
            if ((cell.openSides >> i & 1U) != 0) continue;
            const std::int32_t corners = cell.sides == 1 ? 2 : cell.sides;
            const std::int32_t a = nodes[static_cast<std::size_t>(i)];
            const std::int32_t b = nodes[static_cast<std::size_t>((i + 1) % corners)];
            if (!AppendRecord(sides, KeyedSide{std::minmax(a, b), {c, i}})) return 0;
        }
    }
    return 1;
}

[[nodiscard]] int FindBorders(Scene& scene) {
    std::vector<KeyedSide> sides;
    if (!ListSides(scene, sides)) return 0;
    std::ranges::sort(sides, {}, [](const KeyedSide& s) { return std::pair(s.nodes, s.side.cell); });
    for (std::size_t i = 0; i < sides.size(); ++i) {
        const bool shared = i + 1 < sides.size() && sides[i + 1].nodes == sides[i].nodes;
        const bool sameMaterial = shared && MaterialOf(scene, sides[i].side) == MaterialOf(scene, sides[i + 1].side);
        if (!sameMaterial && !AppendRecord(scene.borders, sides[i].side)) return 0;
        if (!shared) continue;
        const SceneSide& second = sides[++i].side;
        scene.cells[second.cell].sharedSides |= 1U << second.side;
    }
    return 1;
}

// ---------------------------------------------------------------------------------------------------------------------
// Nodes with a boundary value

[[nodiscard]] int FindBoundaryNodes(Scene& scene) {
    std::vector<std::int32_t> types;
    if (!MakeTable(types, static_cast<std::size_t>(model.nodeCount))) return 0;
    for (std::size_t n = 0; n < types.size(); ++n) types[n] = model.nodes[n].bcType;
    for (std::size_t i = 0; i < static_cast<std::size_t>(model.qBoundaryCount); ++i) {
        const QBoundaryRec& edge = model.qBoundaries[i];
        for (const std::int32_t node : {edge.node1, edge.node2}) {
            if (types[IndexOf(node)] == bcFree) types[IndexOf(node)] = bcUnitFlux;
        }
    }
    for (std::size_t n = 0; n < types.size(); ++n) {
        const NodeRec& node = model.nodes[n];
        if (types[n] != bcFree && !AppendRecord(scene.boundaryNodes, BoundaryNode{node.x, node.y, types[n]})) return 0;
    }
    return 1;
}

// ---------------------------------------------------------------------------------------------------------------------
// Grids

void AddLocal(CellGrid& grid, Slots nodes, float r, float s) {
    SlotValues N{};
    ShapeFunctions(N, r, s, nodes);
    grid.local.push_back({r, s});
    grid.N.push_back(N);
}

// From `from` to `to` in n steps, with the ends met exactly.
float Step(float from, float to, std::int32_t i, std::int32_t n) {
    return i == n ? to : from + (to - from) * static_cast<float>(i) / static_cast<float>(n);
}

std::uint16_t Index(std::int32_t i) { return static_cast<std::uint16_t>(i); }

void CutQuadrilateral(CellGrid& grid, const SceneCell& cell, std::int32_t n) {
    const Slots nodes = SlotsOf(cell);
    for (std::int32_t j = 0; j <= n; ++j) {
        for (std::int32_t i = 0; i <= n; ++i)
            AddLocal(grid, nodes, Step(-1, cell.rEnd, i, n), Step(-1, cell.sEnd, j, n));
    }
    const auto at = [n](std::int32_t i, std::int32_t j) { return Index(j * (n + 1) + i); };
    for (std::int32_t j = 0; j < n; ++j) {
        for (std::int32_t i = 0; i < n; ++i) {
            grid.triangles.push_back({at(i, j), at(i + 1, j), at(i + 1, j + 1)});
            grid.triangles.push_back({at(i, j), at(i + 1, j + 1), at(i, j + 1)});
        }
    }
    for (std::int32_t i = 0; i < n; ++i) grid.rim.push_back(at(n - i, n));
    for (std::int32_t i = 0; i < n; ++i) grid.rim.push_back(at(0, n - i));
    for (std::int32_t i = 0; i < n; ++i) grid.rim.push_back(at(i, 0));
    for (std::int32_t i = 0; i <= n; ++i) grid.rim.push_back(at(n, i));
}

void CutTriangle(CellGrid& grid, const SceneCell& cell, std::int32_t n) {
    const Slots nodes = SlotsOf(cell);
    for (std::int32_t j = 0; j <= n; ++j) {
        for (std::int32_t i = 0; i <= n - j; ++i) AddLocal(grid, nodes, Step(0, 1, i, n), Step(0, 1, j, n));
    }
    const auto at = [n](std::int32_t i, std::int32_t j) { return Index(j * (n + 1) - j * (j - 1) / 2 + i); };
    for (std::int32_t j = 0; j < n; ++j) {
        for (std::int32_t i = 0; i < n - j; ++i) {
            grid.triangles.push_back({at(i, j), at(i + 1, j), at(i, j + 1)});
            if (i + j + 1 < n) grid.triangles.push_back({at(i + 1, j), at(i + 1, j + 1), at(i, j + 1)});
        }
    }
    for (std::int32_t i = 0; i < n; ++i) grid.rim.push_back(at(i, 0));
    for (std::int32_t i = 0; i < n; ++i) grid.rim.push_back(at(n - i, i));
    for (std::int32_t i = 0; i <= n; ++i) grid.rim.push_back(at(0, n - i));
}

void CutLine(CellGrid& grid, const SceneCell& cell, std::int32_t n) {
    for (std::int32_t i = 0; i <= n; ++i) {
        AddLocal(grid, SlotsOf(cell), Step(1, -1, i, n), 0);
        grid.rim.push_back(Index(i));
    }
}

CellGrid CutCell(const SceneCell& cell, std::int32_t perSide) {
    CellGrid grid;
    grid.perSide = perSide;
    if (cell.sides == 4) {
        CutQuadrilateral(grid, cell, perSide);
    } else if (cell.sides == 3) {
        CutTriangle(grid, cell, perSide);
    } else {
        CutLine(grid, cell, perSide);
    }
    return grid;
}

// ---------------------------------------------------------------------------------------------------------------------
// Steps

[[nodiscard]] int AddArrows(Scene& scene, const SceneCell& cell, const StepResults& results) {
    RuleTable rule{};
    const std::size_t points = PointCount(cell.element);
    if (points > rule.size()) return 1;
    GetIntegrationRule(rule, points);
    const ElementRec& element = model.elements[cell.element];
    for (std::size_t p = 0; p < points; ++p) {
        SlotValues N{};
        ShapeFunctions(N, rule[p].r, rule[p].s, element.nodes);
        const ScenePoint at = FinitePosition(element, N);
        const PointResult& result = results.points[PointsBegin(cell.element) + p];
        if (!AppendRecord(scene.arrows, SceneArrow{at.x, at.y, result.fluxX, result.fluxY})) return 0;
    }
    return 1;
}

}  // namespace

int BuildScene(Scene& scene) {
    scene = {};
    const float reach = ReachOfInfinity();
    for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
        if (!AddCell(scene, e, reach)) return 0;
    }
    for (SceneCell& cell : scene.cells) {
        if (cell.kind == SceneKind::Infinite) SetInfiniteBounds(scene, cell);
    }
    if (!scene.cells.empty()) {
        scene.left = scene.bottom = std::numeric_limits<float>::max();
        scene.right = scene.top = -std::numeric_limits<float>::max();
        TakeBounds(scene, false);
        TakeBounds(scene, true);
    }
    for (SceneCell& cell : scene.cells) {
        if (cell.kind != SceneKind::Infinite) WidenBounds(cell);
    }
    return FindBorders(scene) && FindBoundaryNodes(scene);
}

int SetSceneStep(Scene& scene, const StepResults& results) {
    if (!MakeTable(scene.temperatures, results.nodes.size())) return 0;
    std::ranges::transform(results.nodes, scene.temperatures.begin(), &NodeResult::temperature);
    scene.arrows.clear();
    for (const SceneCell& cell : scene.cells) {
        if (cell.kind == SceneKind::Active && cell.sides > 1 && !AddArrows(scene, cell, results)) return 0;
    }
    if (!MakeTable(scene.sections, results.sections.size())) return 0;
    std::ranges::copy(results.sections, scene.sections.begin());
    scene.hasStep = true;
    (void)TemperatureRange(scene, scene.temperatures, scene.least, scene.greatest);
    return 1;
}

bool TemperatureRange(const Scene& scene, std::span<const float> temperatures, float& least, float& greatest) {
    bool any = false;
    for (const SceneCell& cell : scene.cells) {
        if (!cell.takesPart) continue;
        for (const std::int32_t node : SlotsOf(cell)) {
            if (node <= 0) continue;
            const float value = temperatures[IndexOf(node)];
            least = any ? std::min(least, value) : value;
            greatest = any ? std::max(greatest, value) : value;
            any = true;
        }
    }
    return any;
}

const CellGrid& GridOf(Scene& scene, const SceneCell& cell, std::int32_t perSide) {
    const std::int32_t pieces = std::clamp(perSide, 1, mostPieces);
    if (cell.kind == SceneKind::Infinite) {
        constexpr std::uint32_t ownGrid = 0;  // its far sides are its own: nothing is kept
        return scene.grids[ownGrid] = CutCell(cell, pieces);
    }
    std::uint32_t key = static_cast<std::uint32_t>(pieces) << slotCount;
    for (std::size_t slot = 0; slot < slotCount; ++slot) key |= (SlotsOf(cell)[slot] > 0 ? 1U : 0U) << slot;
    const auto found = scene.grids.find(key);
    return found != scene.grids.end() ? found->second : scene.grids[key] = CutCell(cell, pieces);
}

void PlaceGrid(const Scene& scene, const SceneCell& cell, const CellGrid& grid, std::vector<ScenePoint>& points) {
    const ElementRec& element = model.elements[cell.element];
    points.resize(grid.N.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        points[i] = cell.kind == SceneKind::Infinite ? InfinitePosition(cell, grid.local[i])
                                                     : FinitePosition(element, grid.N[i]);
        points[i].temperature = scene.hasStep ? Interpolated(grid.N[i], element, scene.temperatures) : 0;
    }
}

}  // namespace kaldra
