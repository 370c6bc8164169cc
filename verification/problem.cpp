#include "problem.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>

namespace verification {

Curve Constant(double value) { return {{-1000, value}, {1000, value}}; }

Curve Ramp(double from, double to, double below, double above) {
    return {{from - 1000, below}, {from, below}, {to, above}, {to + 1000, above}};
}

double Smooth(double u) {
    const double v = std::clamp(u, 0.0, 1.0);
    return v * v * (3 - 2 * v);
}

double SmoothSlope(double u) { return u <= 0 || u >= 1 ? 0 : 6 * u * (1 - u); }

std::vector<double> Divide(double a, double b, int n, double growth) {
    std::vector<double> values{a};
    const double first = growth == 1 ? (b - a) / n : (b - a) * (growth - 1) / (std::pow(growth, n) - 1);
    for (int i = 0; i < n; ++i) values.push_back(values.back() + first * std::pow(growth, i));
    values.back() = b;
    return values;
}

std::vector<Step> EqualSteps(int count, double increment, int saveEvery) {
    std::vector<Step> steps;
    for (int i = 1; i <= count; ++i) steps.push_back({increment, i * increment, i % saveEvery == 0});
    return steps;
}

// ---------------------------------------------------------------------------------------------------------------------
// Grid

namespace {

// Corners stand at even positions of a lattice, side nodes halfway between two of them.
class Lattice {
public:
    Lattice(std::size_t columns, std::size_t rows)
        : columns_(2 * columns + 1), rows_(2 * rows + 1), number_(columns_ * rows_, 0) {}

    void Use(std::size_t i, std::size_t j) { number_[j * columns_ + i] = 1; }
    int Number(std::size_t i, std::size_t j) const { return number_[j * columns_ + i]; }

    // Calls visit(i, j) for each position in use, along the shorter direction first, and numbers it.
    template <class Visit>
    void NumberAll(Visit visit) {
        int count = 0;
        const bool byRows = columns_ <= rows_;
        for (std::size_t a = 0; a < (byRows ? rows_ : columns_); ++a) {
            for (std::size_t b = 0; b < (byRows ? columns_ : rows_); ++b) {
                const std::size_t i = byRows ? b : a;
                const std::size_t j = byRows ? a : b;
                if (Number(i, j) == 0) continue;
                number_[j * columns_ + i] = ++count;
                visit(i, j);
            }
        }
    }

private:
    std::size_t columns_, rows_;
    std::vector<int> number_;
};

struct Position {
    std::size_t i, j;
};

using Corners = std::vector<Position>;  // three or four, counter-clockwise

Position Middle(const Position& a, const Position& b) { return {(a.i + b.i) / 2, (a.j + b.j) / 2}; }

// The elements of the cell with lower left corner (i, j): a quadrilateral, or two triangles with diagonals that turn.
std::vector<Corners> CellElements(Family family, std::size_t i, std::size_t j) {
    const Position sw{i, j}, se{i + 2, j}, ne{i + 2, j + 2}, nw{i, j + 2};
    if (family == Family::Quad4 || family == Family::Quad8) return {{ne, nw, sw, se}};
    if ((i + j) % 4 == 0) return {{sw, se, ne}, {sw, ne, nw}};
    return {{sw, se, nw}, {se, ne, nw}};
}

// The eight slots of an element; an unused one is the position of no node.
std::vector<std::pair<std::size_t, Position>> SlotsOf(const Corners& corners, bool quadratic) {
    std::vector<std::pair<std::size_t, Position>> slots;
    for (std::size_t k = 0; k < corners.size(); ++k) {
        slots.emplace_back(k, corners[k]);
        if (quadratic) slots.emplace_back(4 + k, Middle(corners[k], corners[(k + 1) % corners.size()]));
    }
    return slots;
}

}  // namespace

void MakeGrid(Problem& problem, Family family, int points, const std::vector<double>& xs, const std::vector<double>& ys,
              const Displacement& move) {
    const bool quadratic = family == Family::Triangle6 || family == Family::Quad8;
    Lattice lattice(xs.size() - 1, ys.size() - 1);
    std::vector<Corners> all;
    for (std::size_t i = 0; i + 1 < xs.size(); ++i) {
        for (std::size_t j = 0; j + 1 < ys.size(); ++j) {
            for (const Corners& corners : CellElements(family, 2 * i, 2 * j)) all.push_back(corners);
        }
    }
    const auto corner = [&](std::size_t i, std::size_t j) {
        return move ? move(xs[i / 2], ys[j / 2]) : std::pair(xs[i / 2], ys[j / 2]);
    };
    // A node inside a cell lies on the diagonal of its two triangles.
    const auto place = [&](std::size_t i, std::size_t j) {
        const bool falling = i % 2 == 1 && j % 2 == 1 && (i - 1 + j - 1) % 4 != 0;
        const auto [x1, y1] = corner(i, falling ? j + 1 : j);
        const auto [x2, y2] = corner(i + i % 2, falling ? j - 1 : j + j % 2);
        problem.nodes.push_back({.x = (x1 + x2) / 2, .y = (y1 + y2) / 2});
    };
    for (const Corners& corners : all) {
        for (const auto& [slot, at] : SlotsOf(corners, quadratic)) lattice.Use(at.i, at.j);
    }
    lattice.NumberAll(place);
    for (const Corners& corners : all) {
        Element element{.points = points};
        for (const auto& [slot, at] : SlotsOf(corners, quadratic)) element.nodes[slot] = lattice.Number(at.i, at.j);
        problem.elements.push_back(element);
    }
}

void MakeColumn(Problem& problem, Family family, int points, const std::vector<double>& depths, double initial,
                double surface) {
    std::vector<double> ys;
    for (const double depth : depths) ys.push_back(-depth);
    std::ranges::reverse(ys);
    MakeGrid(problem, family, points, {0, 1}, ys);
    for (Node& node : problem.nodes) {
        node.initial = initial;
        if (node.y == 0) SetTemperature(node, surface);
    }
}

void SetTemperature(Node& node, double value) {
    node.bcType = 1;
    node.bcValue = value;
    node.initial = value;
}

int NodeAt(const Problem& problem, double x, double y) {
    const auto found = std::ranges::find_if(
        problem.nodes, [&](const Node& node) { return std::abs(node.x - x) < 1e-6 && std::abs(node.y - y) < 1e-6; });
    return found == problem.nodes.end() ? 0 : static_cast<int>(found - problem.nodes.begin()) + 1;
}

// ---------------------------------------------------------------------------------------------------------------------
// Data file

namespace {

class Writer {
public:
    explicit Writer(const std::filesystem::path& path) : file_(path, std::ios::binary) {}

    template <class... Arguments>
    void Line(const char* format, Arguments... arguments) {
        char text[128];
        if constexpr (sizeof...(Arguments) == 0) {
            std::snprintf(text, sizeof text, "%s", format);
        } else {
            std::snprintf(text, sizeof text, format, arguments...);
        }
        if (std::string(text).size() > 94) throw std::runtime_error(std::string("line too long: ") + text);
        file_ << text << "\r\n";
    }

    void Finish() {
        file_.close();
        if (!file_) throw std::runtime_error("cannot write a data file");
    }

private:
    std::ofstream file_;
};

void WritePoints(Writer& out, const Curve& curve) {
    out.Line("curve");
    for (const auto& [x, y] : curve) out.Line("%.9g %.9g", x, y);
}

void WriteProperty(Writer& out, const char* keyword, const Curve& curve) {
    out.Line("%s 1", keyword);
    out.Line("1 %d 0.0 4.0", static_cast<int>(curve.size()));
    WritePoints(out, curve);
}

void WriteSettings(Writer& out, const Problem& p) {
    for (const char* line :
         {"FILEINFO", "KALDRA 4.23", "TITLE", "Verification", "exact solution", "a", "b", "ANALYSIS"}) {
        out.Line(line);
    }
    out.Line("%d %d %.9g 1 %.9g", p.isTransient ? 2 : 1, p.view, p.latentHeat, p.freezingPoint);
    out.Line("CONVERGE");
    out.Line("%d %.9g %d", p.maxIterations, p.tolerance, p.maxPhasePoints);
    out.Line("TIME %d", static_cast<int>(p.steps.size()));
    int number = 0;
    for (const Step& step : p.steps) out.Line("%d %.9g %.9g %d", ++number, step.increment, step.elapsed, step.saved);
}

void WriteFunctions(Writer& out, const Problem& p) {
    out.Line("MATERIAL 1");
    out.Line("1 1 1 %.9g %.9g %.9g", p.frozenCapacity, p.unfrozenCapacity, p.waterContent);
    WriteProperty(out, "KFUNCTION", p.conductivity);
    WriteProperty(out, "SFUNCTION", p.water.empty() ? Constant(1) : p.water);
    out.Line("MFUNCTION 0");
    out.Line("BFUNCTION %d", p.history.empty() ? 0 : 1);
    if (p.history.empty()) return;
    out.Line("1 %d 1 1 0.0 0.0 1", static_cast<int>(p.history.size()));
    WritePoints(out, p.history);
}

void WriteMesh(Writer& out, const Problem& p) {
    out.Line("NODE %d", static_cast<int>(p.nodes.size()));
    int number = 0;
    for (const Node& n : p.nodes) {
        out.Line("%d %.9g %.9g %.9g %d %d 0 1 %.9g", ++number, n.x, n.y, n.bcValue, n.bcType, n.bcFunction, n.initial);
    }
    out.Line("ELEMENT %d", static_cast<int>(p.elements.size()));
    number = 0;
    for (const Element& e : p.elements) {
        const auto& s = e.nodes;
        out.Line("%d %d %d %d %d %d %d %d %d 1 %d 1.0 %d %d", ++number, s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7],
                 e.points, e.infiniteR, e.infiniteS);
    }
}

}  // namespace

void WriteDataFile(const Problem& problem, const std::filesystem::path& path) {
    Writer out(path);
    WriteSettings(out, problem);
    WriteFunctions(out, problem);
    WriteMesh(out, problem);
    out.Line("POLE 1");
    out.Line("%.9g %.9g", problem.poleX, problem.poleY);
    out.Line("FLUX 0");
    out.Line("qBOUNDARY 0");
    out.Finish();
}

}  // namespace verification
