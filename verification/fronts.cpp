// Freezing fronts in a half space. The depth of a front grows as sqrt(t); the figure of a case is the mean, over the
// saved steps of the second half of the run, of the computed depth by the exact one. A correct method gives 1 to within
// its discretisation: half the spacing of the points, 1 to 2 % of the depths here, as the front goes from point to
// point.
//
// The method: within a step the latent slope of a point never falls (the slope floor), and points take latent heat only
// once they are switched. Both make the iteration settle where it would otherwise run on for ever, at a price: a point
// keeps the largest slope that any iterate has met, so that it gives off more latent heat than it has, and the front
// stays behind. A loose tolerance cuts the iteration short before that happens, and may leave a point too little.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "cases.h"
#include "freezing_column.h"

namespace verification {

namespace {

constexpr double wellPosed = 0.05;  // the accuracy that is known for a front posed as in NarrowFront

// Mean of the computed depth of the middle of the freezing range by the exact one.
double FrontRatio(const Pose& pose) {
    const Problem problem = FreezingColumn(pose);
    const Folder folder;
    Run(problem, folder);
    const FreezingHalfSpace exact(GroundOf(pose), initialTemperature, surfaceTemperature);
    const double middle = -pose.range / 2;
    const int steps = StepCount(pose);
    double sum = 0;
    int count = 0;
    for (int step = steps / pose.saves; step <= steps; step += steps / pose.saves) {
        if (2 * step <= steps) continue;
        const double depth = DepthOf(problem, pose, ReadNodes(folder, step), middle);
        sum += depth / (exact.DepthOverRoot(middle) * std::sqrt(step * pose.dt));
        ++count;
    }
    return sum / count;
}

std::string Text(const Pose& pose) {
    char text[64];
    std::snprintf(text, sizeof text, "depth ratio, tol %g%%, %d points, dt %g", pose.tolerance, pose.maxPhasePoints,
                  pose.dt);
    return text;
}

// The references against each other: the limit of a sharp front at the middle of the range differs from the solution
// with the range by the order of the range over the drop of temperature in the frozen part.
void CompareReferences(Report& report) {
    const Pose pose;
    const Ground ground = GroundOf(pose);
    const double neumann = 2 * NeumannLambda(ground, -pose.range / 2, initialTemperature, surfaceTemperature) *
                           std::sqrt(ground.frozenConductivity / ground.frozenCapacity);
    const FreezingHalfSpace exact(ground, initialTemperature, surfaceTemperature);
    report.Relative("Neumann's depth over sqrt(t), by shooting", neumann, exact.DepthOverRoot(-pose.range / 2),
                    pose.range / -surfaceTemperature);
}

// How far the figure depends on the mesh and the step, with the points at one depth switched at a time.
void Sweep(Report& report) {
    double least = 10, most = 0;
    for (const double spacing : {0.1, 0.05, 0.025}) {
        for (const double dt : {0.1, 0.25, 0.5}) {
            for (const double tolerance : {1.0, 0.5, 0.1}) {
                const double ratio = FrontRatio({.spacing = spacing, .dt = dt, .tolerance = tolerance});
                least = std::min(least, ratio);
                most = std::max(most, ratio);
            }
        }
    }
    const char* reason = "27 runs, spacing 0.025 to 0.1, dt 0.1 to 0.5, tolerance 0.1 to 1 %: chance of mesh and step";
    report.Known("least depth ratio of a sweep", 1, least, reason);
    report.Known("largest depth ratio of a sweep", 1, most, reason);
}

}  // namespace

// A freezing range of 0.1 degrees, 1 % of the drop. Well posed: as many points at a time as lie at one depth, a
// tolerance between 0.1 and 1 %, and about ten steps for the front to pass from one depth of points to the next. That
// spacing and step were found by trial: the sweep shows how the figure scatters with others.
void NarrowFront(Report& report, bool full) {
    CompareReferences(report);
    for (const double tolerance : full ? std::vector{1.0, 0.5, 0.2, 0.1} : std::vector{0.5}) {
        const Pose pose{.tolerance = tolerance};
        report.Relative(Text(pose), 1, FrontRatio(pose), wellPosed);
    }
    if (full) Sweep(report);
}

void BadlyPosedFront(Report& report, bool full) {
    const Pose many{.dt = 1, .tolerance = 0.01, .maxPhasePoints = 1000};
    report.Known(Text(many), 1, FrontRatio(many),
                 "many points at a time, tight tolerance: each keeps its largest slope, and the front stays behind");
    const Pose tight{.dt = 1, .tolerance = 0.01};
    report.Known(Text(tight), 1, FrontRatio(tight), "tight tolerance: the same, less");
    const Pose kelvin{.origin = 273.15};
    report.Known(Text(kelvin) + ", in K", 1, FrontRatio(kelvin),
                 "every change is below 1 % of 273 K: the slope at the mean is taken, which can miss a narrow range");
    if (!full) return;
    const Pose wide{.range = 4, .tolerance = 0.01, .origin = 273.15};
    report.Known(Text(wide) + ", in K", 1, FrontRatio(wide),
                 "range of 4 degrees: the slope at the mean is as good as the secant, what is left is the slope floor");
}

// A freezing range of 4 degrees, iterated to 0.01 %. Backward difference and elements alone would give 1 % at dt 1 and
// 0.2 % at dt 0.25; the slope floor adds an error that falls with the change of temperature in a step, so slowly. Any
// convergent method of an order above 1/4 halves the error in going to a sixteenth of the step.
void WideFront(Report& report, bool full) {
    const Pose posed{.range = 4, .tolerance = 1, .days = 50};
    report.Relative(Text(posed), 1, FrontRatio(posed), wellPosed);
    const auto ratioAt = [](double dt) {
        return FrontRatio({.range = 4, .spacing = 0.1, .dt = dt, .tolerance = 0.01, .days = 50, .saves = 10});
    };
    const double coarse = ratioAt(1), fine = ratioAt(1.0 / 16);
    report.Known("depth ratio, tol 0.01%, dt 1", 1, coarse, "the slope floor, see the README");
    if (full) report.Known("depth ratio, tol 0.01%, dt 1/4", 1, ratioAt(0.25), "the slope floor");
    report.Known("depth ratio, tol 0.01%, dt 1/16", 1, fine, "the slope floor");
    report.Absolute("error at dt 1/16 by error at dt 1", 0, std::abs(fine - 1) / std::abs(coarse - 1), 0.5);
}

}  // namespace verification
