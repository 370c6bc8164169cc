// Measured orders of accuracy.
//
// The element matrices and the solution are f32, so that nothing below some 1e-6 of the largest temperature can be
// seen; the meshes are coarse enough for the discretisation to dominate.

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "cases.h"
#include "element/shape_functions.h"
#include "engine.h"
#include "problem.h"

namespace verification {

namespace {

constexpr double pi = std::numbers::pi;

struct Member {
    const char* name;
    Family family;
    int points;
    int cells;  // of the coarsest mesh, along a side
    int order;  // p + 1 for polynomials of degree p
};

constexpr std::array members{
    Member{"3-node triangle, 1 point", Family::Triangle3, 1, 8, 2},
    Member{"3-node triangle, 3 points", Family::Triangle3, 3, 8, 2},
    Member{"6-node triangle, 3 points", Family::Triangle6, 3, 4, 3},
    Member{"4-node quadrilateral, 4 points", Family::Quad4, 4, 8, 2},
    Member{"4-node quadrilateral, 9 points", Family::Quad4, 9, 8, 2},
    Member{"8-node quadrilateral, 4 points", Family::Quad8, 4, 4, 3},
    Member{"8-node quadrilateral, 9 points", Family::Quad8, 9, 4, 3},
};

// Harmonic, and of no symmetry that a mesh could share.
double Harmonic(double x, double y) {
    return std::exp(2 * x) * std::cos(2 * y + 0.3) + std::sin(3 * x + 0.5) * std::sinh(3 * y) / 10;
}

// A smooth displacement that leaves the sides of the unit square straight, so that no element is a rectangle.
std::pair<double, double> Wave(double x, double y) {
    const double shift = 0.06 * std::sin(pi * x) * std::sin(pi * y);
    return {x + shift, y - 0.7 * shift};
}

// Root mean square of the error over places inside each element, weighted by nothing: the elements are of about one
// size.
double FieldError(const Problem& problem, const std::vector<NodeRow>& rows) {
    double sum = 0;
    int count = 0;
    for (const Element& element : problem.elements) {
        const bool isTriangle = element.nodes[3] == 0;
        for (const auto& [a, b] : {std::pair{0.2, 0.3}, {0.55, 0.25}, {0.15, 0.7}}) {
            kaldra::SlotValues N;
            kaldra::ShapeFunctions(N, static_cast<float>(isTriangle ? a : 2 * a - 1),
                                   static_cast<float>(isTriangle ? b : 2 * b - 1), element.nodes);
            double x = 0, y = 0, temperature = 0;
            for (std::size_t k = 0; k < 8; ++k) {
                if (element.nodes[k] == 0) continue;
                const auto node = static_cast<std::size_t>(element.nodes[k]) - 1;
                const auto weight = static_cast<double>(N[k]);
                x += weight * problem.nodes[node].x;
                y += weight * problem.nodes[node].y;
                temperature += weight * rows[node].temperature;
            }
            sum += std::pow(temperature - Harmonic(x, y), 2);
            ++count;
        }
    }
    return std::sqrt(sum / count);
}

double ErrorWith(const Member& member, int cells) {
    Problem problem;
    problem.conductivity = Constant(2.5);
    MakeGrid(problem, member.family, member.points, Divide(0, 1, cells), Divide(0, 1, cells), Wave);
    for (Node& node : problem.nodes) {
        const bool isBoundary = std::min({node.x, 1 - node.x, node.y, 1 - node.y}) < 1e-9;
        if (isBoundary) SetTemperature(node, Harmonic(node.x, node.y));
    }
    const Folder folder;
    Run(problem, folder);
    return FieldError(problem, ReadNodes(folder, 0));
}

}  // namespace

// A harmonic field with its values prescribed around the unit square. The theory of elliptic problems gives an error of
// order p + 1 in the mean square (G. Strang and G. J. Fix, An Analysis of the Finite Element Method, 1973,
// section 3.4). The tolerance of 0.15 is the usual distance from the limit on meshes of 8 to 32 cells.
void OrderInSpace(Report& report, bool full) {
    for (const Member& member : members) {
        const int refinements = full ? 2 : 1;
        double coarse = ErrorWith(member, full ? member.cells : 2 * member.cells);
        for (int i = 1; i <= refinements; ++i) {
            const double fine = ErrorWith(member, (full ? 1 : 2) * member.cells << i);
            if (i == refinements) report.Absolute(member.name, member.order, std::log2(coarse / fine), 0.15);
            coarse = fine;
        }
    }
}

// One decaying mode between an isothermal surface and an insulated foot: T = exp(-m t) sin(pi x / (2 H)),
// m = a (pi / (2 H))^2. The backward difference gives (1 + m dt)^(-n) after n steps, whatever the element, so two
// figures are expected: this value, to the accuracy of f32 and of the elements, and the order 1 against the exact
// decay.
void OrderInTime(Report& report, bool full) {
    constexpr double depth = 4, a = 0.08, end = 40;
    const double m = a * std::pow(pi / (2 * depth), 2);
    double before = 0;
    for (const int steps : full ? std::vector{10, 20, 40, 80} : std::vector{20, 40}) {
        Problem problem{.isTransient = true, .frozenCapacity = 2000, .unfrozenCapacity = 2000};
        problem.conductivity = Constant(2000 * a);
        MakeColumn(problem, Family::Quad8, 9, Divide(0, depth, 8), 0, 0);
        for (Node& node : problem.nodes) node.initial = 10 * std::sin(-pi * node.y / (2 * depth));
        problem.steps = EqualSteps(steps, end / steps, steps);
        const Folder folder;
        Run(problem, folder);

        const auto foot = static_cast<std::size_t>(NodeAt(problem, 0, -depth)) - 1;
        const double decay = ReadNodes(folder, steps).at(foot).temperature / 10;
        const double error = decay - std::exp(-m * end);
        const std::string text = std::to_string(steps) + " steps";
        // m of the quadratic elements is too large by a part (k h)^4 / 720 with k h = pi / 16; then some 100 roundings.
        report.Relative("backward difference, " + text, std::pow(1 + m * end / steps, -steps), decay, 1e-5);
        if (before != 0) {
            // log2 of the ratio of errors is 1 - O(m dt): (1 + m dt)^(-n) = exp(-m t) (1 + m^2 dt t / 2 - ...).
            report.Absolute("order in time, " + text, 1, std::log2(before / error), m * end / steps + 0.02);
        }
        before = error;
    }
}

}  // namespace verification
