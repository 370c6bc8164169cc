#include "functions/function_value.h"

#include <algorithm>
#include <array>
#include <bit>

#include "platform/memory.h"
#include "platform/narrow.h"

namespace kaldra {

namespace {

// The interval of neighbouring points that holds x, once x is held in range. Differences from its ends are f32.
struct Interval {
    double h;
    double u;  // x - a
    double v;  // x - b
    double ya, ma, yb, mb;
};

// An inner point belongs to the interval that starts there, the last point to the last interval.
Interval FindInterval(std::span<const FunctionPoint> points, float x) {
    if (x <= points.front().x) x = points.front().x;
    if (points.back().x <= x) x = points.back().x;
    const auto inner = points.subspan(1, points.size() - 2);
    const auto above = std::ranges::upper_bound(inner, x, {}, &FunctionPoint::x);
    const auto i = static_cast<std::size_t>(above - inner.begin());
    const FunctionPoint& a = points[i];
    const FunctionPoint& b = points[i + 1];
    const double at = static_cast<double>(x);
    const double left = static_cast<double>(a.x);
    const double right = static_cast<double>(b.x);
    return {right - left,
            static_cast<double>(Narrow(at - left)),
            static_cast<double>(Narrow(at - right)),
            static_cast<double>(a.y),
            static_cast<double>(a.slope),
            static_cast<double>(b.y),
            static_cast<double>(b.slope)};
}

}  // namespace

double EvaluateFunction(std::span<const FunctionPoint> points, float x) {
    if (points.empty()) return 0;
    if (points.size() == 1) return static_cast<double>(points[0].y);
    if (points.size() == 2 && points[0].y == points[1].y) return static_cast<double>(points[0].y);
    const auto [h, u, v, ya, ma, yb, mb] = FindInterval(points, x);
    const double h2 = h * h;
    const double h3 = h2 * h;
    const double Pa = (2 / h3) * (h / 2 + u) * (v * v);
    const double Qa = (1 / h2) * u * (v * v);
    const double Pb = (-2 / h3) * (v - h / 2) * (u * u);
    const double Qb = (1 / h2) * v * (u * u);
    return (Qa * ma + Pa * ya) + (Qb * mb + Pb * yb);
}

double EvaluateFunctionSlope(std::span<const FunctionPoint> points, float x) {
    if (points.size() < 2) return 0;
    const auto [h, u, v, ya, ma, yb, mb] = FindInterval(points, x);
    const double h2 = static_cast<double>(Narrow(h * h));
    const double h3 = h * h * h;
    const double dPa = (2 / h3) * (2 * (h / 2 + u) + v) * v;
    const double dQa = (1 / h2) * (2 * u + v) * v;
    const double dPb = (-2 / h3) * (2 * (v - h / 2) + u) * u;
    const double dQb = (1 / h2) * (2 * v + u) * u;
    return (dQa * ma + dPa * ya) + (dQb * mb + dPb * yb);
}

static LaneInterval IntervalBetween(const FunctionPoint& a, const FunctionPoint& b) {
    const double left = static_cast<double>(a.x);
    const double right = static_cast<double>(b.x);
    const double h = right - left;
    const double h2 = h * h;
    return {left,
            right,
            h / 2,
            2 / (h2 * h),
            1 / h2,
            1 / static_cast<double>(Narrow(h2)),
            static_cast<double>(a.y),
            static_cast<double>(a.slope),
            static_cast<double>(b.y),
            static_cast<double>(b.slope)};
}

// The intervals once more, each member in a row of its own.
static void FillColumns(const std::vector<LaneInterval>& intervals, std::vector<double>& columns) {
    for (std::size_t i = 0; i < intervals.size(); ++i) {
        const auto members = std::bit_cast<std::array<double, intervalColumns>>(intervals[i]);
        for (std::size_t member = 0; member < members.size(); ++member) {
            columns[member * fewIntervals + i] = members[member];
        }
    }
}

int MakeLaneFunction(std::span<const FunctionPoint> points, LaneFunctionTables& tables, LaneFunction& function) {
    const std::size_t count = points.size() < 2 ? 0 : points.size() - 1;
    auto& [x, intervals, columns] = tables;
    if (!MakeTable(x, points.size()) || !MakeTable(intervals, count)) return 0;
    for (std::size_t i = 0; i < points.size(); ++i) x[i] = points[i].x;
    const bool isShort = count > 0 && count <= fewIntervals && std::ranges::is_sorted(x);
    if (!MakeTable(columns, isShort ? intervalColumns * fewIntervals : 0)) return 0;
    for (std::size_t i = 0; i < count; ++i) intervals[i] = IntervalBetween(points[i], points[i + 1]);
    function.intervals = count;
    function.x = x.data();
    function.interval = intervals.data();
    if (isShort) FillColumns(intervals, columns);
    function.columns = isShort ? columns.data() : nullptr;
    function.constant = count == 0 || (count == 1 && points[0].y == points[1].y);
    function.value = points.empty() ? 0 : static_cast<double>(points[0].y);
    return 1;
}

}  // namespace kaldra
