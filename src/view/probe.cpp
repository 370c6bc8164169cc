#include "view/probe.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "element/element_geometry.h"
#include "post/result_set.h"

namespace kaldra {

namespace {

constexpr double within = 1e-4;  // of the local range: a place on an edge belongs to either neighbour

// A place in the local coordinates of an element.
struct LocalPlace {
    double r = 0, s = 0;
};

bool IsInside(const SceneCell& cell, const LocalPlace& at) {
    if (cell.sides == 3) return at.r >= -within && at.s >= -within && at.r + at.s <= 1 + within;
    return at.r >= -1 - within && at.s >= -1 - within && at.r <= static_cast<double>(cell.rEnd) + within &&
           at.s <= static_cast<double>(cell.sEnd) + within;
}

// Moves the origin of the coordinates and of a place to the first corner: far from it f32 would tell no small steps
// apart.
void MoveOrigin(const ElementRec& element, ElementCoordinates& xy, double& x, double& y) {
    const float left = xy[0];
    const float bottom = xy[1];
    for (std::size_t slot = 0; slot < slotCount; ++slot) {
        if (element.nodes[slot] <= 0) continue;
        xy[2 * slot] -= left;
        xy[2 * slot + 1] -= bottom;
    }
    x -= static_cast<double>(left);
    y -= static_cast<double>(bottom);
}

// Solves for the local coordinates of a place by Newton's method: a straight-sided element takes two or three steps.
bool FindLocal(const SceneCell& cell, double x, double y, LocalPlace& local) {
    const ElementRec& element = model.elements[cell.element];
    ElementCoordinates xy{};
    GetElementCoordinates(cell.element, xy);
    if (element.infiniteR != 0) x -= static_cast<double>(model.poleX);
    if (element.infiniteS != 0) y -= static_cast<double>(model.poleY);
    if (cell.kind != SceneKind::Infinite) MoveOrigin(element, xy, x, y);
    local = cell.sides == 3 ? LocalPlace{1.0 / 3, 1.0 / 3} : LocalPlace{0, 0};
    if (cell.kind == SceneKind::Infinite) local = {-0.9, cell.openSides == 0b1001U ? -0.9 : 0};
    for (int step = 0; step < 25; ++step) {
        PointGeometry at{};
        const IntegrationPoint point{static_cast<float>(local.r), static_cast<float>(local.s), 0, 0};
        if (!ComputePointGeometry(element, xy, point, at)) return false;
        double dx = x;
        double dy = y;
        for (std::size_t slot = 0; slot < slotCount; ++slot) {
            dx -= static_cast<double>(at.M[slot] * xy[2 * slot]);
            dy -= static_cast<double>(at.M[slot] * xy[2 * slot + 1]);
        }
        const double dr = dx * static_cast<double>(at.inverse[0]) + dy * static_cast<double>(at.inverse[2]);
        const double ds = dx * static_cast<double>(at.inverse[1]) + dy * static_cast<double>(at.inverse[3]);
        local.r = std::clamp(local.r + dr, -3.0, cell.kind == SceneKind::Infinite ? 0.99 : 3.0);
        local.s = std::clamp(local.s + ds, -3.0, cell.openSides == 0b1001U ? 0.99 : 3.0);
        if (std::abs(dr) + std::abs(ds) < 1e-5) return IsInside(cell, local);
    }
    return false;
}

// The cell at a place, or null.
const SceneCell* FindCell(const Scene& scene, double x, double y, LocalPlace& local) {
    const auto px = static_cast<float>(x);
    const auto py = static_cast<float>(y);
    for (const SceneCell& cell : scene.cells) {
        if (px < cell.left || px > cell.right || py < cell.bottom || py > cell.top || cell.sides == 1) continue;
        if (FindLocal(cell, x, y, local)) return &cell;
    }
    return nullptr;
}

float TemperatureAt(const Scene& scene, const SceneCell& cell, const LocalPlace& at) {
    const ElementRec& element = model.elements[cell.element];
    SlotValues N{};
    ShapeFunctions(N, static_cast<float>(at.r), static_cast<float>(at.s), element.nodes);
    float value = 0;
    for (std::size_t slot = 0; slot < slotCount; ++slot) {
        if (element.nodes[slot] > 0) value += N[slot] * scene.temperatures[IndexOf(element.nodes[slot])];
    }
    return value;
}

void SetPointValues(Probe& probe, const SceneCell& cell, const StepResults& results, const LocalPlace& at) {
    RuleTable rule{};
    const std::size_t points = PointCount(cell.element);
    if (points == 0 || points > rule.size()) return;
    GetIntegrationRule(rule, points);
    std::size_t nearest = 0;
    double least = std::numeric_limits<double>::max();
    for (std::size_t p = 0; p < points; ++p) {
        const double far = std::hypot(static_cast<double>(rule[p].r) - at.r, static_cast<double>(rule[p].s) - at.s);
        if (far >= least) continue;
        least = far;
        nearest = p;
    }
    const PointResult& point = results.points[PointsBegin(cell.element) + nearest];
    probe.hasPoint = true;
    probe.conductivity = point.conductivity;
    probe.unfrozenWater = point.unfrozenWater;
}

void TakeNearer(std::int32_t node, double x, double y, std::int32_t& nearest, double& least) {
    if (node <= 0) return;
    const NodeRec& record = model.nodes[IndexOf(node)];
    const double far = std::hypot(static_cast<double>(record.x) - x, static_cast<double>(record.y) - y);
    if (far >= least) return;
    least = far;
    nearest = node;
}

}  // namespace

Probe ProbeAt(const Scene& scene, const StepResults* results, double x, double y) {
    Probe probe;
    LocalPlace at;
    const SceneCell* const cell = FindCell(scene, x, y, at);
    if (cell == nullptr) return probe;
    probe.element = static_cast<std::int32_t>(cell->element) + 1;
    probe.takesPart = cell->takesPart;
    double least = std::numeric_limits<double>::max();
    for (const std::int32_t node : model.elements[cell->element].nodes) TakeNearer(node, x, y, probe.node, least);
    if (!scene.hasStep || results == nullptr || !cell->takesPart) return probe;
    probe.temperature = TemperatureAt(scene, *cell, at);
    SetPointValues(probe, *cell, *results, at);
    return probe;
}

std::vector<std::vector<SectionSample>> SampleLine(const Scene& scene, double x1, double y1, double x2, double y2,
                                                   std::int32_t count) {
    std::vector<std::vector<SectionSample>> pieces;
    bool inside = false;
    for (std::int32_t i = 0; i <= count && scene.hasStep; ++i) {
        const double part = static_cast<double>(i) / count;
        LocalPlace at;
        const SceneCell* const cell = FindCell(scene, x1 + part * (x2 - x1), y1 + part * (y2 - y1), at);
        const bool found = cell != nullptr && cell->takesPart;
        if (found && !inside) pieces.emplace_back();
        inside = found;
        if (!found) continue;
        pieces.back().push_back(
            {part * std::hypot(x2 - x1, y2 - y1), static_cast<double>(TemperatureAt(scene, *cell, at))});
    }
    return pieces;
}

std::int32_t NearestNode(const Scene& scene, double x, double y, double reach) {
    std::int32_t nearest = 0;
    double least = reach;
    for (const SceneCell& cell : scene.cells) {
        for (const std::int32_t node : model.elements[cell.element].nodes) TakeNearer(node, x, y, nearest, least);
    }
    return nearest;
}

}  // namespace kaldra
