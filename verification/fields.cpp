// Steady fields with a formula: axisymmetric, closed by infinite elements, in plan view.

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "cases.h"
#include "engine.h"
#include "problem.h"

namespace verification {

// A hollow cylinder between two temperatures: T = T1 + (T2 - T1) ln(r/r1) / ln(r2/r1); the heat flow per radian and
// length is k (T1 - T2) / ln(r2/r1). Carslaw and Jaeger, Conduction of Heat in Solids, 2nd ed., 1959, section 7.2.
//
// Each ring spans the same q = ln(growth). A linear element conducts (q/2) / tanh(q/2) times as well as its ring, each
// by the same factor, so that a correct method gives the nodes exactly and the flow too large by just this factor. In a
// quadratic element the factor is 1 + q^4 / 180 (the part of 1/r that a linear gradient cannot follow, squared).
// Temperatures can be held to 1e-5. A flow is a sum of products some 80 times as large as itself, with some ten
// roundings of 6e-8 each: 5e-5.
void LogarithmicProfile(Report& report, bool) {
    constexpr double inner = 0.1, outer = 10, hot = 8, cold = -4, conductivity = 1.7;
    constexpr int rings = 24;
    const double growth = std::pow(outer / inner, 1.0 / rings);
    struct Kind {
        const char* name;
        Family family;
        int points;
        double factor;
    };
    const double q = std::log(growth);
    for (const Kind& kind : {Kind{"linear", Family::Quad4, 4, q / 2 / std::tanh(q / 2)},
                             Kind{"quadratic", Family::Quad8, 9, 1 + std::pow(q, 4) / 180}}) {
        Problem problem{.view = 2};
        problem.conductivity = Constant(conductivity);
        MakeGrid(problem, kind.family, kind.points, Divide(inner, outer, rings, growth), {0, 1});
        for (Node& node : problem.nodes) {
            if (node.x == inner) SetTemperature(node, hot);
            if (node.x == outer) SetTemperature(node, cold);
        }
        const Folder folder;
        Run(problem, folder);
        const std::vector<NodeRow> rows = ReadNodes(folder, 0);
        double worst = 0, flow = 0;
        for (std::size_t n = 0; n < rows.size(); ++n) {
            const double x = problem.nodes[n].x;
            const double exact = hot + (cold - hot) * std::log(x / inner) / std::log(outer / inner);
            worst = std::max(worst, std::abs(rows[n].temperature - exact));
            if (x == inner) flow += rows[n].flow;
        }
        const std::string text = std::string(", ") + kind.name + " elements";
        report.Absolute("largest error over the drop" + text, 0, worst / (hot - cold), 1e-5);
        report.Relative("heat flow" + text, kind.factor * conductivity * (hot - cold) / std::log(outer / inner), flow,
                        5e-5);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Far field

namespace {

using Field = double (*)(double x, double y);

constexpr double height = 1;  // of the source above the surface

// A line source pair (dipole) above the surface of a plane, and a point source above it in space. Both are harmonic
// below the surface and vanish at infinity.
double Dipole(double x, double y) { return (height - y) / (x * x + (height - y) * (height - y)); }
double PointSource(double x, double y) { return 1 / std::hypot(x, height - y); }

// Adds a node, or finds the one that stands there.
int AddNode(Problem& problem, double x, double y) {
    if (const int found = NodeAt(problem, x, y)) return found;
    problem.nodes.push_back({.x = x, .y = y});
    return static_cast<int>(problem.nodes.size());
}

// Elements infinite along +x, along -y and, in the corner, along both, around the grid [0, reach] x [-reach, 0]. What
// lies beyond twice the distance from the pole is infinitely far: its nodes are drawn at three times it.
void CloseWithInfiniteElements(Problem& problem, const std::vector<double>& lines, double reach) {
    const double x2 = 2 * reach, x3 = 3 * reach;
    const double y2 = height - 2 * (reach + height), y3 = height - 3 * (reach + height);
    const auto at = [&](double x, double y) { return AddNode(problem, x, y); };
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
        const double a = lines[i], b = lines[i + 1], m = (a + b) / 2;
        problem.elements.push_back(
            {.nodes = {at(x3, -a), at(reach, -a), at(reach, -b), at(x3, -b), at(x2, -a), at(reach, -m), at(x2, -b), 0},
             .points = 9,
             .infiniteR = 1});
        problem.elements.push_back(
            {.nodes = {at(b, y3), at(b, -reach), at(a, -reach), at(a, y3), at(b, y2), at(m, -reach), at(a, y2), 0},
             .points = 9,
             .infiniteS = -1});
    }
    problem.elements.push_back(
        {.nodes = {at(x3, y3), at(x3, -reach), at(reach, -reach), at(reach, y3), 0, at(x2, -reach), at(reach, y2), 0},
         .points = 9,
         .infiniteR = 1,
         .infiniteS = -1});
}

// Surface temperatures prescribed, 0 at infinity where there are infinite elements, insulated at `reach` where not.
// Gives the largest error down to and out to twice the height of the source, by the largest temperature.
double FarFieldError(Field field, int view, int reach, bool infinite) {
    Problem problem{.view = view, .poleX = 0, .poleY = height};
    problem.conductivity = Constant(2);
    const std::vector<double> lines = Divide(0, reach, 2 * reach);
    std::vector<double> ys;
    for (const double line : lines) ys.push_back(-line);
    std::ranges::reverse(ys);
    MakeGrid(problem, Family::Quad8, 9, lines, ys);
    if (infinite) CloseWithInfiniteElements(problem, lines, reach);
    for (Node& node : problem.nodes) {
        if (node.y == 0) SetTemperature(node, field(node.x, 0));
        if (node.x > 2.5 * reach || node.y < height - 2.5 * (reach + height)) SetTemperature(node, 0);
    }
    const Folder folder;
    Run(problem, folder);
    const std::vector<NodeRow> rows = ReadNodes(folder, 0);
    double worst = 0;
    for (std::size_t n = 0; n < rows.size(); ++n) {
        const Node& node = problem.nodes[n];
        if (node.x > 2 * height || node.y < -2 * height) continue;
        worst = std::max(worst, std::abs(rows[n].temperature - field(node.x, node.y)));
    }
    return worst / field(0, 0);
}

}  // namespace

// The temperature below a source above a surface of known temperature, in a mesh that ends at four and at eight times
// the height of the source. Infinite elements carry 1/x and 1/x^2 along their axis, but across it they are only
// quadratic and beyond the corner linear (P. Bettess, Infinite Elements, 1992), so there is no exact figure. What a
// correct method does: the fields and their error at the edge fall as 1/reach, and an error that is 0 on the surface
// reaches inwards as depth/reach, so that the error near the source falls with the square of the reach (0.3 for the
// part of the mesh itself). And it is well below the error of the same mesh without infinite elements: a fifth of it is
// asked for.
void FarField(Report& report, bool) {
    struct Kind {
        const char* name;
        Field field;
        int view;
    };
    for (const Kind& kind : {Kind{"plane", Dipole, 1}, Kind{"axisymmetric", PointSource, 2}}) {
        const std::string text = std::string(", ") + kind.name;
        const double cutOff = FarFieldError(kind.field, kind.view, 4, false);
        const double nearer = FarFieldError(kind.field, kind.view, 4, true);
        const double farther = FarFieldError(kind.field, kind.view, 8, true);
        report.Known("error of a mesh cut off" + text, 0, cutOff,
                     "no error of the solver: the field beyond is missing");
        report.Absolute("error with infinite elements" + text, 0, nearer, cutOff / 5);
        report.Absolute("order in the reach of the mesh" + text, 2, std::log2(nearer / farther), 0.3);
    }
}

// ---------------------------------------------------------------------------------------------------------------------

// Plan view: a strip of length L with unit flux q on all of it and both ends at 0: T = q x (L - x) / (2 k), with the
// thickness 1. Linear elements of any length give it exactly at the nodes, with half of the load of an element at each
// end, which is what the nodal areas of a rectangle are. What is left is f32: 1e-5. The heat that leaves through the
// ends is that on all nodes less the share of the end nodes, which goes nowhere: q (L - h1/2 - h2/2).
void PlanViewFlux(Report& report, bool) {
    constexpr double length = 12, flux = 3, conductivity = 1.5;
    Problem problem{.view = 3};
    problem.conductivity = Constant(conductivity);
    const std::vector<double> xs = Divide(0, length, 24, 1.05);
    MakeGrid(problem, Family::Quad4, 4, xs, {0, 0.4, 1});
    for (Node& node : problem.nodes) {
        node.bcType = 3;
        node.bcValue = flux;
        if (node.x == 0 || node.x == length) SetTemperature(node, 0);
    }
    const Folder folder;
    Run(problem, folder);
    const std::vector<NodeRow> rows = ReadNodes(folder, 0);
    double worst = 0, outflow = 0;
    for (std::size_t n = 0; n < rows.size(); ++n) {
        const Node& node = problem.nodes[n];
        const double exact = flux * node.x * (length - node.x) / (2 * conductivity);
        worst = std::max(worst, std::abs(rows[n].temperature - exact));
        if (node.bcType == 1) outflow -= rows[n].flow;
    }
    report.Absolute("largest error over the largest temperature", 0,
                    worst / (flux * length * length / (8 * conductivity)), 1e-5);
    const double ends = (xs[1] - xs[0] + xs[24] - xs[23]) / 2;
    report.Relative("heat through the ends", flux * (length - ends), outflow, 1e-5);
}

}  // namespace verification
