// Conduction without phase change in a half space.

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <string>
#include <vector>

#include "cases.h"
#include "engine.h"
#include "problem.h"

namespace verification {

namespace {

constexpr double diffusivity = 0.08;  // square metres per day

Problem ConductingColumn(const std::vector<double>& depths, Family family, int points, double initial, double surface) {
    Problem problem{.isTransient = true, .frozenCapacity = 2000, .unfrozenCapacity = 2000};
    problem.conductivity = Constant(2000 * diffusivity);
    MakeColumn(problem, family, points, depths, initial, surface);
    return problem;
}

}  // namespace

// A half space at one temperature whose surface jumps to another: T = Ts + (Ti - Ts) erf(x / (2 sqrt(a t))).
// Carslaw and Jaeger, Conduction of Heat in Solids, 2nd ed., 1959, section 2.4.
//
// The error of a correct method: a mode that decays as exp(-m t) decays in the backward difference as
// (1 + m dt)^(-t/dt), and in linear elements with a consistent capacity m grows by the factor 1 + m h^2 / (12 a). So
// the error is t T_tt (dt / 2 - h^2 / (12 a)) to first order. With T_tt = (Ti - Ts) s exp(-s^2) (3/2 - s^2) / (t^2
// sqrt(pi)), s = x / (2 sqrt(a t)). The tolerance is one and a half times the sum of the sizes of both terms; the half
// is for the higher terms of the jump at the start.
void ErrorFunction(Report& report, bool full) {
    constexpr double h = 0.05, dt = 0.1, initial = 5, surface = -3;
    const int steps = full ? 400 : 200;
    Problem problem = ConductingColumn(Divide(0, 15, 300), Family::Quad4, 4, initial, surface);
    problem.steps = EqualSteps(steps, dt, steps);
    const Folder folder;
    Run(problem, folder);

    const double t = steps * dt;
    const std::vector<NodeRow> rows = ReadNodes(folder, steps);
    double worst = 0, shape = 0;
    for (std::size_t n = 0; n < rows.size(); ++n) {
        const double s = -problem.nodes[n].y / (2 * std::sqrt(diffusivity * t));
        worst = std::max(worst, std::abs(rows[n].temperature - surface - (initial - surface) * std::erf(s)));
        shape = std::max(shape, std::abs(s * std::exp(-s * s) * (1.5 - s * s)) / std::sqrt(std::numbers::pi));
    }
    const double predicted = shape / t * (dt / 2 + h * h / (12 * diffusivity));
    report.Absolute("largest error over the jump", 0, worst / (initial - surface), 1.5 * predicted);
    // The flow k (Ti - Ts) / sqrt(pi a t) leaves through the surface.
    double flow = 0;
    for (const NodeRow& row : rows) flow += row.flow;
    const double exact = 2000 * diffusivity * (surface - initial) / std::sqrt(std::numbers::pi * diffusivity * t);
    // Its rate q_t / q is -1 / (2 t): the same expansion gives t q_tt / q (dt / 2 + ...) with q_tt / q = 3 / (4 t^2).
    report.Relative("heat flow at the surface", exact, flow, 1.5 * 0.75 / t * (dt / 2 + h * h / (12 * diffusivity)));
}

// A surface at A sin(w t): T = A exp(-x/d) sin(w t - x/d), d = sqrt(2 a / w). Carslaw and Jaeger, section 2.6.
//
// The backward difference replaces i w by (1 - exp(-i w dt)) / dt = i w (1 - i w dt / 2 - ...), so that the wave number
// (1 + i) / d becomes (1 + i) (1 - i e) / d with e = w dt / 4: the logarithm of the amplitude falls by a part e too
// fast and the phase lags by a part e too little. A correct method has these errors; the tolerance is 1.2 e. The run
// starts from the exact field, so that no transient is left, and lasts one period.
void PeriodicSurface(Report& report, bool full) {
    constexpr double amplitude = 10, period = 360;
    const int steps = full ? 1440 : 360;
    const double w = 2 * std::numbers::pi / period, dt = period / steps, e = w * dt / 4;
    const double d = std::sqrt(2 * diffusivity / w);
    Problem problem = ConductingColumn(Divide(0, 10 * d, 40), Family::Quad8, 9, 0, 0);
    for (Node& node : problem.nodes) node.initial = amplitude * std::exp(node.y / d) * std::sin(node.y / d);
    for (Node& node : problem.nodes) node.bcFunction = node.bcType == 1 ? 1 : 0;
    for (int i = 0; i <= 72; ++i) {
        problem.history.emplace_back(i * period / 72, amplitude * std::sin(2 * std::numbers::pi * i / 72));
    }
    constexpr int samples = 36;
    problem.steps = EqualSteps(steps, dt, steps / samples);
    const Folder folder;
    Run(problem, folder);

    for (const int depth : {1, 2, 3}) {  // in units of d; a node stands there
        const auto node = static_cast<std::size_t>(NodeAt(problem, 0, -depth * d)) - 1;
        std::complex<double> harmonic = 0;
        for (int k = 1; k <= samples; ++k) {
            const double angle = 2 * std::numbers::pi * k / samples;
            harmonic += ReadNodes(folder, k * steps / samples).at(node).temperature * std::polar(2.0 / samples, -angle);
        }
        harmonic *= std::complex<double>(0, 1);  // of a sine: amplitude at phase 0
        const std::string at = " at depth " + std::to_string(depth) + " d";
        report.Absolute("log amplitude" + at, -depth, std::log(std::abs(harmonic) / amplitude), 1.2 * e * depth);
        report.Absolute("phase lag" + at, depth, -std::arg(harmonic), 1.2 * e * depth);
    }
}

}  // namespace verification
