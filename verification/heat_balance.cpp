// Heat that left through the boundary against heat given off by the ground, step by step and in sum.
//
// Two accounts of the ground are kept. By capacity: the capacity that the step recorded times the change of
// temperature; the assembled equations conserve this exactly, so the two sides differ by f32 and the seven printed
// digits alone. By the material functions: sensible heat and the latent heat of the water that really froze; this is
// what a correct method conserves, and here it holds as far as the recorded slope is the secant of the whole step.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "cases.h"
#include "freezing_column.h"

namespace verification {

namespace {

struct Balance {
    double capacityWorst = 0;   // largest difference of a step by capacity, by the heat of the step
    double functionsWorst = 0;  // the same by the material functions
    double sides = 0;           // largest difference between the two sides of the column, degrees
    double in = 0, byCapacity = 0, byFunctions = 0;  // sums
};

Balance BalanceOf(const Pose& pose) {
    const Problem problem = FreezingColumn(pose);
    const Folder folder;
    Run(problem, folder);
    std::vector<NodeRow> before;
    for (const Node& node : problem.nodes) before.push_back({node.initial, 0});
    Balance sum;
    for (int step = 1; step <= StepCount(pose); ++step) {
        const std::vector<NodeRow> after = ReadNodes(folder, step);
        const double in = SumOfFlows(after) * pose.dt;
        const double byCapacity = HeatByCapacity(problem, pose, before, after, ReadPoints(folder, step));
        const double byFunctions = StoredHeat(problem, pose, after) - StoredHeat(problem, pose, before);
        sum.capacityWorst = std::max(sum.capacityWorst, std::abs(byCapacity / in - 1));
        sum.functionsWorst = std::max(sum.functionsWorst, std::abs(byFunctions / in - 1));
        sum.sides = std::max(sum.sides, SideDifference(after));
        sum.in += in;
        sum.byCapacity += byCapacity;
        sum.byFunctions += byFunctions;
        before = after;
    }
    return sum;
}

// A node temperature carries some 1e-6 of 10 degrees, and a step at a front changes the sum over the column by the
// heat of some tenths of a degree in one element: 1e-3 of a step, 1e-4 of the sum in which these errors cancel.
constexpr double stepRounding = 1e-3, sumRounding = 1e-4;

void ReportCapacity(Report& report, const Balance& balance) {
    report.Absolute("worst step, by recorded capacity", 0, balance.capacityWorst, stepRounding);
    report.Relative("sum, by recorded capacity", balance.in, balance.byCapacity, sumRounding);
}

void ReportFunctions(Report& report, const Pose& pose, const Balance& balance) {
    char text[48];
    std::snprintf(text, sizeof text, ", tol %g%%, dt %g", pose.tolerance, pose.dt);
    report.Known(std::string("worst step, by functions") + text, 0, balance.functionsWorst,
                 "points that were switched in the step keep the largest slope of its iterates");
    report.Known(std::string("sum, by functions") + text, balance.in, balance.byFunctions,
                 "the heat through the surface includes latent heat that the ground did not have");
}

}  // namespace

// No latent heat and one capacity: both accounts are the same and exact.
void SensibleHeat(Report& report, bool) {
    const Pose pose{
        .range = 4, .dt = 1, .tolerance = 0.01, .days = 40, .saves = 40, .latentHeat = 0, .equalCapacities = true};
    const Balance balance = BalanceOf(pose);
    ReportCapacity(report, balance);
    report.Absolute("worst step, by functions", 0, balance.functionsWorst, stepRounding);
    report.Relative("sum, by functions", balance.in, balance.byFunctions, sumRounding);
    report.Absolute("difference between the two sides, degrees", 0, balance.sides, 1e-4);
}

// Freezing: by capacity exact again; by the functions exact in the limit of small steps only, as the fronts are.
void FreezingHeat(Report& report, bool) {
    const Pose narrow{.dt = 0.25, .days = 40, .saves = 160};
    const Balance first = BalanceOf(narrow);
    ReportCapacity(report, first);
    ReportFunctions(report, narrow, first);
    report.Known(
        "difference between the two sides, degrees", 0, first.sides,
        "rounding decides which of two equal points meets the larger slope, and the floor keeps the difference");

    Pose wide{.range = 4, .spacing = 0.1, .dt = 1, .tolerance = 0.01, .days = 40, .saves = 40};
    const Balance coarse = BalanceOf(wide);
    ReportCapacity(report, coarse);
    ReportFunctions(report, wide, coarse);
    wide.dt = 1.0 / 16;
    wide.saves = StepCount(wide);
    const Balance fine = BalanceOf(wide);
    ReportFunctions(report, wide, fine);
    const auto excess = [](const Balance& balance) { return std::abs(balance.byFunctions / balance.in - 1); };
    // The first steps, which cross the whole range at once, weigh on the sum: three quarters is all that is asked for.
    report.Absolute("excess at dt 1/16 by excess at dt 1", 0, excess(fine) / excess(coarse), 0.75);
}

}  // namespace verification
