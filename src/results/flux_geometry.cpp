#include "results/flux_geometry.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <span>

#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/narrow.h"
#include "run/run_state.h"

namespace kaldra {

namespace {

// The f32 number nearest to 1e-10, widened; not the f64 number nearest to it.
constexpr double nearness = static_cast<double>(1e-10F);
static_assert(std::bit_cast<std::uint64_t>(nearness) == 0x3DDB7CDFE0000000U);

bool Near(double a, double b) { return std::abs(a - b) < nearness; }

// Both ends count, and their order does not matter.
bool Within(double value, double a, double b) { return !(value < a && value < b) && !(value > a && value > b); }

bool OneSide(double a, double b, double of) { return (a < of && b < of) || (a > of && b > of); }

// ---------------------------------------------------------------------------------------------------------------------
// Two segments

// A segment in f64, with the f32 differences of its ends.
struct Segment {
    double x1, y1, x2, y2;
    double dx, dy;
    bool vertical, horizontal;

    Segment(float fromX, float fromY, float toX, float toY)
        : x1(static_cast<double>(fromX)),
          y1(static_cast<double>(fromY)),
          x2(static_cast<double>(toX)),
          y2(static_cast<double>(toY)),
          dx(static_cast<double>(Narrow(x2 - x1))),
          dy(static_cast<double>(Narrow(y2 - y1))),
          vertical(std::abs(x2 - x1) < nearness),
          horizontal(std::abs(y2 - y1) < nearness) {}

    [[nodiscard]] double Slope() const { return dy / dx; }
    [[nodiscard]] double Intercept() const { return y1 - Slope() * x1; }
};

// A vertical segment against one that is not.
int MeetVertical(const Segment& vertical, const Segment& other, float& x, float& y) {
    if (OneSide(other.x1, other.x2, vertical.x1)) return 0;
    const double at = other.Intercept() + other.Slope() * vertical.x1;
    x = Narrow(vertical.x1);
    y = Narrow(at);
    return Within(at, vertical.y1, vertical.y2);
}

// A horizontal segment against an oblique one.
int MeetHorizontal(const Segment& horizontal, const Segment& other, float& x, float& y) {
    if (OneSide(other.y1, other.y2, horizontal.y1)) return 0;
    const double at = (horizontal.y1 - other.Intercept()) / other.Slope();
    y = Narrow(horizontal.y1);
    x = Narrow(at);
    return Within(at, horizontal.x1, horizontal.x2);
}

int MeetOblique(const Segment& a, const Segment& b, float& x, float& y) {
    if (a.Slope() == b.Slope()) return 0;
    const double at = (b.Intercept() - a.Intercept()) / (a.Slope() - b.Slope());
    x = Narrow(at);
    y = Narrow(a.Slope() * at + a.Intercept());
    const double storedX = static_cast<double>(x);
    const double storedY = static_cast<double>(y);
    return Within(storedX, a.x1, a.x2) && Within(storedY, a.y1, a.y2) && Within(storedX, b.x1, b.x2) &&
           Within(storedY, b.y1, b.y2);
}

}  // namespace

int SegmentIntersect(float x1, float y1, float x2, float y2, float x3, float y3, float x4, float y4, float& x,
                     float& y) {
    const Segment a(x1, y1, x2, y2);
    const Segment b(x3, y3, x4, y4);
    const auto give = [&](float atX, float atY) {
        x = atX;
        y = atY;
        return 1;
    };
    if (Near(a.x1, b.x1) && Near(a.y1, b.y1)) return give(x1, y1);
    if (Near(a.x1, b.x2) && Near(a.y1, b.y2)) return give(x1, y1);
    if (Near(a.x2, b.x1) && Near(a.y2, b.y1)) return give(x2, y2);
    if (Near(a.x2, b.x2) && Near(a.y2, b.y2)) return give(x2, y2);
    const bool isPoint = (a.vertical && a.horizontal) || (b.vertical && b.horizontal);
    if (isPoint || (a.vertical && b.vertical) || (a.horizontal && b.horizontal)) return 0;
    if (a.vertical) return MeetVertical(a, b, x, y);
    if (b.vertical) return MeetVertical(b, a, x, y);
    if (a.horizontal) return MeetHorizontal(a, b, x, y);
    if (b.horizontal) return MeetHorizontal(b, a, x, y);
    return MeetOblique(a, b, x, y);
}

// ---------------------------------------------------------------------------------------------------------------------
// Crossings

namespace {

struct Point {
    float x, y;
};

// The corners of an element in order.
struct Corners {
    std::array<Point, 4> at{};
    std::size_t count = 0;
};

// Points where a section meets the edges of an element, with the numbers of the lines (from 1) that gave them.
struct FoundPoints {
    std::array<Point, 2> at{};
    std::array<std::int32_t, 2> line{};
    std::size_t count = 0;
};

// No corners for an element with an empty slot among its first three, which no section crosses.
Corners CornersOf(const ElementRec& element) {
    Corners corners;
    for (std::size_t slot = 0; slot < 4; ++slot) {
        const std::int32_t node = element.nodes[slot];
        if (node > 0) {
            corners.at[corners.count++] = {model.nodes[IndexOf(node)].x, model.nodes[IndexOf(node)].y};
        } else if (slot < 3) {
            return {};
        }
    }
    return corners;
}

// True when all corners lie on one side of the line's box; its border does not count as a side.
bool MissesBox(const Corners& corners, const FluxLine& line) {
    const float left = std::min(line.x1, line.x2);
    const float right = std::max(line.x1, line.x2);
    const float low = std::min(line.y1, line.y2);
    const float high = std::max(line.y1, line.y2);
    const auto all = [&](auto outside) {
        return std::all_of(corners.at.begin(), corners.at.begin() + corners.count, outside);
    };
    return all([=](Point p) { return p.x < left; }) || all([=](Point p) { return p.x > right; }) ||
           all([=](Point p) { return p.y < low; }) || all([=](Point p) { return p.y > high; });
}

// Looks along the edges in order, and stops at the second point of the element.
void FindOnEdges(const Corners& corners, const FluxLine& line, std::int32_t number, FoundPoints& found) {
    for (std::size_t i = 0; i < corners.count && found.count < 2; ++i) {
        const Point a = corners.at[i];
        const Point b = corners.at[(i + 1) % corners.count];
        Point hit{};
        if (!SegmentIntersect(line.x1, line.y1, line.x2, line.y2, a.x, a.y, b.x, b.y, hit.x, hit.y)) continue;
        found.at[found.count] = hit;
        found.line[found.count] = number;
        ++found.count;
    }
}

FoundPoints FindPoints(const Corners& corners, const FluxSection& section) {
    FoundPoints found;
    for (std::int32_t number = 1; number <= section.lineCount && found.count < 2; ++number) {
        const FluxLine& line = section.lines[IndexOf(number)];
        if (!MissesBox(corners, line)) FindOnEdges(corners, line, number, found);
    }
    return found;
}

double Distance(const FluxLine& line, Point p) {
    const double dx = static_cast<double>(p.x) - static_cast<double>(line.x1);
    const double dy = static_cast<double>(p.y) - static_cast<double>(line.y1);
    return std::sqrt(dx * dx + dy * dy);
}

// A crossing runs along the polyline, also across the joint of a closed one.
bool SecondComesFirst(const FoundPoints& found, const FluxSection& section) {
    const std::int32_t a = found.line[0];
    const std::int32_t b = found.line[1];
    const FluxLine& line = section.lines[IndexOf(a)];
    if (a == b) return Distance(line, found.at[1]) <= Distance(line, found.at[0]);
    return a == 1 && b == section.lineCount && b > 2;
}

FluxCrossing MakeCrossing(std::int32_t element, const FoundPoints& found, const FluxSection& section) {
    const std::size_t first = SecondComesFirst(found, section) ? 1 : 0;
    const Point a = found.at[first];
    const Point b = found.at[1 - first];
    FluxCrossing crossing{};
    crossing.element = element;
    crossing.xa = a.x;
    crossing.ya = a.y;
    crossing.xb = b.x;
    crossing.yb = b.y;
    return crossing;
}

// Sorts the nodes of all slots by the side of the crossing on which they lie; on the line counts as left.
void SortNodes(FluxCrossing& crossing) {
    const double xa = static_cast<double>(crossing.xa);
    const double ya = static_cast<double>(crossing.ya);
    const double dx = static_cast<double>(crossing.xb) - xa;
    const double dy = static_cast<double>(crossing.yb) - ya;
    const ElementRec& element = model.elements[IndexOf(crossing.element)];
    for (std::size_t slot = 0; slot < slotCount; ++slot) {
        const std::int32_t node = element.nodes[slot];
        if (node <= 0) continue;
        const double x = static_cast<double>(model.nodes[IndexOf(node)].x);
        const double y = static_cast<double>(model.nodes[IndexOf(node)].y);
        const double side = (x - xa) * dy - (y - ya) * dx;
        (side > 0 ? crossing.rightNodes : crossing.leftNodes)[slot] = node;
    }
}

}  // namespace

int BuildFluxCrossings() {
    const auto sections = static_cast<std::size_t>(model.fluxSectionCount);
    for (std::size_t s = 0; s < sections; ++s) model.fluxResults[s] = FluxResult();
    for (std::int32_t number = 1; number <= model.elementCount && sections > 0; ++number) {
        if (!IsRunning()) return 0;
        const Corners corners = CornersOf(model.elements[IndexOf(number)]);
        if (corners.count == 0) continue;
        for (std::size_t s = 0; s < sections; ++s) {
            const FoundPoints found = FindPoints(corners, model.fluxSections[s]);
            if (found.count != 2) continue;
            FluxCrossing crossing = MakeCrossing(number, found, model.fluxSections[s]);
            SortNodes(crossing);
            if (!AppendRecord(model.fluxResults[s].crossings, crossing)) return 0;
            ++model.fluxResults[s].crossingCount;
        }
    }
    return 1;
}

}  // namespace kaldra
