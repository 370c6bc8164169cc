#include "post/thaw_depth.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include "element/element_geometry.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "post/local_point.h"

namespace kaldra {

namespace {

constexpr int divisions = 8;       // of an element's side,
constexpr int divisionsAway = 64;  // and of one that runs to infinity, along which places drift apart
// Where such a side is cut off: at 2 / (1 - r) = 8 times the distance of its near end.
constexpr double nearlyInfinite = 0.75;

struct Corner {
    double r, s;
    double x, y;
};

// A piece of the vertical inside a small triangle of one element.
struct Piece {
    LineSample top, bottom;
};

struct Cut {
    double x = 0;
    double toleranceX = 0, toleranceY = 0;  // distances below them are none
    std::vector<Piece> pieces;
};

// ---------------------------------------------------------------------------------------------------------------------
// Cutting elements

Corner CornerAt(std::size_t e, double r, double s) {
    const LocalPoint point = PointAt(e, r, s);
    return {r, s, point.x, point.y};
}

LineSample SampleAt(std::size_t e, double r, double s) {
    const LocalPoint point = PointAt(e, r, s);
    return {point.y, false, static_cast<std::int32_t>(e), point.N};
}

double SideOf(const Cut& cut, const Corner& corner) {
    const double distance = corner.x - cut.x;
    return std::abs(distance) <= cut.toleranceX ? 0 : distance;
}

// Where the vertical meets the sides of a small triangle: at two places, or along one side.
void CutTriangle(Cut& cut, std::size_t e, const std::array<Corner, 3>& corners) {
    std::vector<LineSample> met;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Corner& a = corners[i];
        const Corner& b = corners[(i + 1) % corners.size()];
        const double fromA = SideOf(cut, a);
        const double fromB = SideOf(cut, b);
        if (fromA == 0) met.push_back(SampleAt(e, a.r, a.s));
        if (fromA * fromB >= 0) continue;
        const double part = fromA / (fromA - fromB);
        met.push_back(SampleAt(e, a.r + part * (b.r - a.r), a.s + part * (b.s - a.s)));
    }
    if (met.size() < 2) return;
    const auto [low, high] = std::ranges::minmax_element(met, {}, &LineSample::y);
    if (high->y - low->y > cut.toleranceY) cut.pieces.push_back({*high, *low});
}

void CutTriangular(Cut& cut, std::size_t e) {
    const auto at = [&](int i, int j) {
        return CornerAt(e, static_cast<double>(i) / divisions, static_cast<double>(j) / divisions);
    };
    for (int i = 0; i < divisions; ++i) {
        for (int j = 0; i + j < divisions; ++j) {
            CutTriangle(cut, e, {at(i, j), at(i + 1, j), at(i, j + 1)});
            if (i + j + 2 <= divisions) CutTriangle(cut, e, {at(i + 1, j), at(i + 1, j + 1), at(i, j + 1)});
        }
    }
}

// Local coordinates at which a quadrilateral is divided, along a direction that may run to infinity.
std::vector<double> Divisions(bool infinite) {
    const int count = infinite ? divisionsAway : divisions;
    const double length = (infinite ? nearlyInfinite : 1) + 1;
    std::vector<double> places;
    for (int i = 0; i <= count; ++i) places.push_back(-1 + i * length / count);
    return places;
}

void CutQuadrilateral(Cut& cut, std::size_t e) {
    const ElementRec& element = model.elements[e];
    const bool both = element.infiniteR != 0 && element.infiniteS != 0;
    const std::vector<double> r = Divisions(IsInfinite(element));
    const std::vector<double> s = Divisions(both);
    for (std::size_t i = 0; i + 1 < r.size(); ++i) {
        for (std::size_t j = 0; j + 1 < s.size(); ++j) {
            const Corner near = CornerAt(e, r[i], s[j]);
            const Corner far = CornerAt(e, r[i + 1], s[j + 1]);
            CutTriangle(cut, e, {near, CornerAt(e, r[i + 1], s[j]), far});
            CutTriangle(cut, e, {near, far, CornerAt(e, r[i], s[j + 1])});
        }
    }
}

bool HasCorners(const ElementRec& element) {
    const std::size_t corners = element.nodes[3] > 0 ? 4 : 3;
    return std::ranges::all_of(std::span(element.nodes).first(corners), [](std::int32_t node) { return node > 0; });
}

// Whether the element may reach x; side nodes bend an element by less than its width.
bool MayReach(const ElementRec& element, double x) {
    if (IsInfinite(element)) return true;
    double least = 1e300;
    double greatest = -1e300;
    for (const std::int32_t node : element.nodes) {
        if (node <= 0) continue;
        const double at = static_cast<double>(model.nodes[IndexOf(node)].x);
        least = std::min(least, at);
        greatest = std::max(greatest, at);
    }
    const double margin = 0.25 * (greatest - least);
    return x >= least - margin && x <= greatest + margin;
}

void CutElements(Cut& cut) {
    for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
        const ElementRec& element = model.elements[e];
        if (IsNullElement(element) || !HasCorners(element) || !MayReach(element, cut.x)) continue;
        element.nodes[3] > 0 ? CutQuadrilateral(cut, e) : CutTriangular(cut, e);
    }
}

// Rounding moves a place by some 1e-7 of its element, or of its distance from the pole.
double ToleranceAlong(float NodeRec::*coordinate) {
    const auto [least, greatest] = std::ranges::minmax(model.nodes, {}, coordinate);
    return 1e-6 * (static_cast<double>(greatest.*coordinate) - static_cast<double>(least.*coordinate));
}

// Pieces on both sides of a border say the same: what lies above the last sample is passed over.
void JoinPieces(Cut& cut, std::vector<LineSample>& samples) {
    std::ranges::sort(cut.pieces, [](const Piece& a, const Piece& b) { return a.top.y > b.top.y; });
    for (Piece& piece : cut.pieces) {
        const double last = samples.empty() ? 1e300 : samples.back().y;
        if (piece.bottom.y >= last - cut.toleranceY) continue;
        if (piece.top.y < last - cut.toleranceY) samples.push_back(piece.top);
        piece.bottom.joined = true;
        samples.push_back(piece.bottom);
    }
}

bool IsThawed(double temperature) { return temperature > static_cast<double>(model.freezingPoint); }

}  // namespace

int CutVertical(double x, VerticalLine& line) {
    line = {x, {}};
    constexpr std::size_t someMemory = 1 << 20;
    return WithMemory(someMemory, [&] {
        Cut cut{x, ToleranceAlong(&NodeRec::x), ToleranceAlong(&NodeRec::y), {}};
        CutElements(cut);
        JoinPieces(cut, line.samples);
    });
}

std::vector<double> TemperaturesAlong(const VerticalLine& line, const StepResults& results) {
    const auto freezing = static_cast<double>(model.freezingPoint);
    std::vector<double> temperatures;
    temperatures.reserve(line.samples.size());
    for (const LineSample& sample : line.samples) {
        const ElementRec& element = model.elements[static_cast<std::size_t>(sample.element)];
        double above = 0;  // the freezing point: ground that is just there stays there
        for (std::size_t slot = 0; slot < slotCount; ++slot) {
            if (element.nodes[slot] <= 0) continue;
            const auto temperature = static_cast<double>(results.nodes[IndexOf(element.nodes[slot])].temperature);
            above += static_cast<double>(sample.N[slot]) * (temperature - freezing);
        }
        temperatures.push_back(freezing + above);
    }
    return temperatures;
}

std::vector<FreezingCrossing> CrossingsAlong(const VerticalLine& line, const std::vector<double>& temperatures) {
    const auto freezing = static_cast<double>(model.freezingPoint);
    std::vector<FreezingCrossing> crossings;
    for (std::size_t i = 1; i < line.samples.size(); ++i) {
        const double above = temperatures[i - 1];
        const double below = temperatures[i];
        if (!line.samples[i].joined || IsThawed(above) == IsThawed(below)) continue;
        const double y =
            line.samples[i - 1].y + (line.samples[i].y - line.samples[i - 1].y) * (freezing - above) / (below - above);
        if (!crossings.empty() && crossings.back().y == y) {  // thawed, just frozen, and thawed again
            crossings.pop_back();
            continue;
        }
        crossings.push_back({y, line.samples.front().y - y, IsThawed(above)});
    }
    return crossings;
}

ThawDepth ThawDepthAlong(const VerticalLine& line, const std::vector<double>& temperatures) {
    if (line.samples.empty()) return {};
    ThawDepth thaw;
    for (const FreezingCrossing& crossing : CrossingsAlong(line, temperatures)) {
        if (crossing.thawedAbove) thaw.depth = crossing.depth;
    }
    if (thaw.depth > 0 || !IsThawed(temperatures.front())) return thaw;
    std::size_t last = 0;
    while (last + 1 < line.samples.size() && line.samples[last + 1].joined) ++last;
    return {line.samples.front().y - line.samples[last].y, true};
}

ThawPeriod PeriodOf(double elapsed) {
    double length = 0;
    for (const BoundaryFunction& function : model.bFunctions) {
        if (function.repeat == 1) length = std::max(length, static_cast<double>(function.period));
    }
    if (length <= 0) return {1, 0, static_cast<double>(model.timeSteps.back().elapsed)};
    constexpr double rounding = 1e-6;
    const double number = std::max(1.0, std::ceil(elapsed / length - rounding));
    return {static_cast<std::int32_t>(number), (number - 1) * length, number * length};
}

// ---------------------------------------------------------------------------------------------------------------------
// The history of a vertical

static void AddToTrumpet(Trumpet& trumpet, const std::vector<double>& temperatures, double weight) {
    if (trumpet.sum.empty()) {
        trumpet.least = trumpet.greatest = temperatures;
        trumpet.sum.assign(temperatures.size(), 0);
    }
    for (std::size_t i = 0; i < temperatures.size(); ++i) {
        trumpet.least[i] = std::min(trumpet.least[i], temperatures[i]);
        trumpet.greatest[i] = std::max(trumpet.greatest[i], temperatures[i]);
        trumpet.sum[i] += weight * temperatures[i];
    }
    trumpet.weight += weight;
}

static void AddStep(ThawHistory& history, const StepResults& results) {
    const std::vector<double> temperatures = TemperaturesAlong(history.line, results);
    const auto elapsed = static_cast<double>(results.elapsed);
    const ThawPeriod period = PeriodOf(elapsed);
    const double before = history.steps.empty() ? 0 : history.steps.back().elapsed;
    const double span = elapsed - std::max(before, period.from);
    const StepThaw step{results.step, elapsed, CrossingsAlong(history.line, temperatures),
                        ThawDepthAlong(history.line, temperatures)};
    if (history.periods.empty() || history.periods.back().period.number != period.number) {
        history.periods.emplace_back().period = period;
    }
    Trumpet& trumpet = history.periods.back();
    const bool first = trumpet.sum.empty();
    AddToTrumpet(trumpet, temperatures, span > 0 ? span : 1);
    if (first || step.thaw.depth > trumpet.deepest.depth) {
        trumpet.deepest = step.thaw;
        trumpet.deepestStep = step.step;
        trumpet.deepestTime = elapsed;
    }
    history.steps.push_back(step);
}

int AddToHistory(ThawHistory& history, const StepResults& results) {
    const std::size_t bytes = history.line.samples.size() * 8 * sizeof(double);
    return WithMemory(bytes, [&] { AddStep(history, results); });
}

}  // namespace kaldra
