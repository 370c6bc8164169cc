#include "freezing_column.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>

namespace verification {

Ground GroundOf(const Pose& pose) {
    constexpr double waterContent = 0.35, secondsPerDay = 86.4;  // in thousands, with W and kJ
    return {.frozenConductivity = 2.2 * secondsPerDay,
            .unfrozenConductivity = 1.5 * secondsPerDay,
            .frozenCapacity = 1900,
            .unfrozenCapacity = pose.equalCapacities ? 1900.0 : 2700.0,
            .latentHeat = pose.latentHeat * waterContent,
            .solidus = -pose.range};
}

int StepCount(const Pose& pose) { return static_cast<int>(std::lround(pose.days / pose.dt)); }

Problem FreezingColumn(const Pose& pose) {
    const Ground ground = GroundOf(pose);
    Problem problem{.isTransient = true,
                    .latentHeat = pose.latentHeat,
                    .freezingPoint = pose.origin,
                    .maxIterations = 500,
                    .tolerance = pose.tolerance,
                    .maxPhasePoints = pose.maxPhasePoints,
                    .frozenCapacity = ground.frozenCapacity,
                    .unfrozenCapacity = ground.unfrozenCapacity,
                    .waterContent = 0.35};
    const double solidus = pose.origin + ground.solidus;
    problem.conductivity = Ramp(solidus, pose.origin, ground.frozenConductivity, ground.unfrozenConductivity);
    problem.water = Ramp(solidus, pose.origin, 0, 1);
    const auto cells = static_cast<int>(std::lround(columnDepth / pose.spacing));
    MakeColumn(problem, Family::Quad4, 4, Divide(0, columnDepth, cells), pose.origin + initialTemperature,
               pose.origin + surfaceTemperature);
    problem.steps = EqualSteps(StepCount(pose), pose.dt, StepCount(pose) / pose.saves);
    return problem;
}

namespace {

constexpr double g = std::numbers::inv_sqrt3;
constexpr std::array<std::pair<double, double>, 4> points{{{g, g}, {-g, g}, {-g, -g}, {g, -g}}};  // in their order

double NodeTemperature(const Element& element, std::size_t corner, const std::vector<NodeRow>& rows) {
    return rows.at(static_cast<std::size_t>(element.nodes[corner]) - 1).temperature;
}

// Bilinear: the two sides of the column need not stay equal, see the README.
double PointTemperature(const Element& element, std::size_t point, const std::vector<NodeRow>& rows) {
    const auto [r, s] = points[point];
    const double upper = std::lerp(NodeTemperature(element, 1, rows), NodeTemperature(element, 0, rows), (1 + r) / 2);
    const double lower = std::lerp(NodeTemperature(element, 2, rows), NodeTemperature(element, 3, rows), (1 + r) / 2);
    return std::lerp(lower, upper, (1 + s) / 2);
}

}  // namespace

double StoredHeat(const Problem& problem, const Pose& pose, const std::vector<NodeRow>& rows) {
    const Ground ground = GroundOf(pose);
    double heat = 0;
    for (const Element& element : problem.elements) {
        for (std::size_t point = 0; point < points.size(); ++point) {
            heat += pose.spacing / 4 * ground.Enthalpy(PointTemperature(element, point, rows) - pose.origin);
        }
    }
    return heat;
}

double HeatByCapacity(const Problem& problem, const Pose& pose, const std::vector<NodeRow>& before,
                      const std::vector<NodeRow>& after, const std::vector<PointRow>& records) {
    double heat = 0;
    std::size_t record = 0;
    for (const Element& element : problem.elements) {
        for (std::size_t point = 0; point < points.size(); ++point) {
            const double change = PointTemperature(element, point, after) - PointTemperature(element, point, before);
            heat += pose.spacing / 4 * records.at(record++).capacity * change;
        }
    }
    return heat;
}

double DepthOf(const Problem& problem, const Pose& pose, const std::vector<NodeRow>& rows, double temperature) {
    const double wanted = temperature + pose.origin;
    double sum = 0;
    for (const Element& element : problem.elements) {  // temperatures rise with depth: one element has it, on each side
        for (const auto& [upper, lower] : {std::pair{0, 3}, {1, 2}}) {
            const double above = NodeTemperature(element, static_cast<std::size_t>(upper), rows);
            const double below = NodeTemperature(element, static_cast<std::size_t>(lower), rows);
            if (above > wanted || below <= wanted) continue;
            const auto node = static_cast<std::size_t>(element.nodes[static_cast<std::size_t>(upper)]) - 1;
            sum += -problem.nodes[node].y + pose.spacing * (wanted - above) / (below - above);
        }
    }
    return sum / 2;
}

double SideDifference(const std::vector<NodeRow>& rows) {
    double largest = 0;
    for (std::size_t n = 0; n + 1 < rows.size(); n += 2) {
        largest = std::max(largest, std::abs(rows[n].temperature - rows[n + 1].temperature));
    }
    return largest;
}

double SumOfFlows(const std::vector<NodeRow>& rows) {
    double sum = 0;
    for (const NodeRow& row : rows) sum += row.flow;
    return sum;
}

}  // namespace verification
