#include "functions/spline_fit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "platform/memory.h"
#include "platform/narrow.h"
#include "run/messages.h"

namespace kaldra {

// ---------------------------------------------------------------------------------------------------------------------
// The weighted spline

namespace {

double Difference(float to, float from) { return static_cast<double>(to) - static_cast<double>(from); }

bool RisesStrictly(std::span<const FunctionPoint> points) {
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        if (!(Difference(points[i + 1].x, points[i].x) > 0)) return false;
    }
    return true;
}

// Units in which steepness is measured: the ranges of x and y, or 1 where one of them is 0.
struct Scale {
    double x = 1;
    double y = 1;
};

Scale UnitSquare(std::span<const FunctionPoint> points) {
    const auto [lowX, highX] = std::ranges::minmax_element(points, {}, &FunctionPoint::x);
    const auto [lowY, highY] = std::ranges::minmax_element(points, {}, &FunctionPoint::y);
    const Scale range{Difference(highX->x, lowX->x), Difference(highY->y, lowY->y)};
    return range.x != 0 && range.y != 0 ? range : Scale{};
}

double SegmentWeight(double h, double d, const Scale& scale, double weight) {
    const double steepness = std::abs((d / scale.y) / (h / scale.x));
    return 1.0 / std::pow(1.0 + steepness * steepness, weight);
}

struct Tridiagonal {
    std::vector<float> lower, upper, rhs;
};

void SetEndRows(std::span<const FunctionPoint> p, Tridiagonal& system) {
    const std::size_t last = p.size() - 1;
    system.upper[0] = 1;
    system.lower[last] = 1;
    system.rhs[0] = Narrow(3 * Difference(p[1].y, p[0].y) / Difference(p[1].x, p[0].x));
    system.rhs[last] = Narrow(3 * Difference(p[last].y, p[last - 1].y) / Difference(p[last].x, p[last - 1].x));
}

void SetInnerRows(std::span<const FunctionPoint> p, double weight, Tridiagonal& system) {
    const Scale scale = UnitSquare(p);
    for (std::size_t i = 1; i + 1 < p.size(); ++i) {
        const double h1 = Difference(p[i].x, p[i - 1].x);
        const double h2 = Difference(p[i + 1].x, p[i].x);
        const double d1 = Difference(p[i].y, p[i - 1].y);
        const double d2 = Difference(p[i + 1].y, p[i].y);
        const double t = SegmentWeight(h1, d1, scale, weight) * h2;
        const double share = t / (SegmentWeight(h2, d2, scale, weight) * h1 + t);
        system.lower[i] = Narrow(share);
        system.upper[i] = Narrow(1 - share);
        system.rhs[i] = Narrow(3 * (1 - share) * d2 / h2 + 3 * share * d1 / h1);
    }
}

}  // namespace

int FitSlopes(std::span<FunctionPoint> points, float weight) {
    const std::size_t n = points.size();
    if (n < 2 || !RisesStrictly(points)) return ShowError(1173);
    Tridiagonal system;
    if (!MakeTable(system.lower, n) || !MakeTable(system.upper, n) || !MakeTable(system.rhs, n)) return 0;
    SetEndRows(points, system);
    SetInnerRows(points, static_cast<double>(weight), system);
    if (!SolveTridiagonal(points, system.lower, 2.0F, system.upper, system.rhs)) return ShowError(1173);
    return 1;
}

int SolveTridiagonal(std::span<FunctionPoint> points, std::span<const float> lower, float diagonal,
                     std::span<const float> upper, std::span<const float> rhs) {
    const std::size_t n = points.size();
    if (diagonal == 0) return 0;
    std::vector<float> g;
    if (!MakeTable(g, n)) return 0;
    double pivot = static_cast<double>(diagonal);
    points[0].slope = Narrow(static_cast<double>(rhs[0]) / pivot);
    for (std::size_t j = 1; j < n; ++j) {
        const double below = static_cast<double>(lower[j]);
        g[j] = Narrow(static_cast<double>(upper[j - 1]) / pivot);
        pivot = static_cast<double>(diagonal) - static_cast<double>(g[j]) * below;
        if (pivot == 0) return 0;
        const double carried = below * static_cast<double>(points[j - 1].slope);
        points[j].slope = Narrow((static_cast<double>(rhs[j]) - carried) / pivot);
    }
    for (std::size_t j = n - 1; j-- > 0;) {
        const double carried = static_cast<double>(g[j + 1]) * static_cast<double>(points[j + 1].slope);
        points[j].slope = Narrow(static_cast<double>(points[j].slope) - carried);
    }
    return 1;
}

// ---------------------------------------------------------------------------------------------------------------------
// The smoothing spline

namespace {

constexpr float smallestSmoothing = 1e-20F;
constexpr double smallestPivot = 1e-20;
constexpr float oneSixth = 0.16666667F;
constexpr float oneThird = 0.33333334F;

// Column i of the second-difference matrix Q has a, b, c in rows i, i + 1, i + 2.
struct SecondDifference {
    float a, b, c;
};

// Row i of the pentadiagonal matrix: its entries in columns i - 2 .. i + 2.
using Band = std::array<float, 5>;
constexpr std::size_t diagonalOfBand = 2;

struct Smoothing {
    std::vector<float> X;  // abscissae scaled to 0..100
    std::vector<float> Y;
    std::vector<SecondDifference> Q;
    std::vector<Band> A;   // T + Qt W Q
    std::vector<float> r;  // right-hand side, then the solution u
    double w = 1;          // weight of every point

    [[nodiscard]] double Step(std::size_t i) const { return Difference(X[i + 1], X[i]); }
};

[[nodiscard]] int MakeSmoothing(Smoothing& s, std::size_t n) {
    return MakeTable(s.X, n) && MakeTable(s.Y, n) && MakeTable(s.Q, n - 2) && MakeTable(s.A, n - 2) &&
           MakeTable(s.r, n - 2);
}

struct Span {
    double first = 0;
    double length = 1;
};

Span SpanOf(std::span<const FunctionPoint> points) {
    const auto [low, high] = std::ranges::minmax_element(points, {}, &FunctionPoint::x);
    const double length = Difference(high->x, low->x);
    return {static_cast<double>(low->x), length == 0 ? 1.0 : length};
}

void SetSecondDifferences(Smoothing& s) {
    for (std::size_t i = 0; i < s.Q.size(); ++i) {
        const double here = s.Step(i);
        const double next = s.Step(i + 1);
        s.Q[i] = {Narrow(1 / here), Narrow(-1 / here - 1 / next), Narrow(1 / next)};
    }
}

// Entries of row i of Qt W Q, then T on the three middle bands.
Band BandRow(const Smoothing& s, std::size_t i) {
    const std::size_t m = s.Q.size();
    const double a = static_cast<double>(s.Q[i].a);
    const double b = static_cast<double>(s.Q[i].b);
    const double c = static_cast<double>(s.Q[i].c);
    const double w = s.w;
    const auto A = [&](std::size_t k) { return static_cast<double>(s.Q[k].a); };
    const auto B = [&](std::size_t k) { return static_cast<double>(s.Q[k].b); };
    const auto C = [&](std::size_t k) { return static_cast<double>(s.Q[k].c); };
    Band row{};
    if (i >= 2) row[0] = Narrow((a / w) * C(i - 2));
    if (i >= 1) row[1] = Narrow((b / w) * C(i - 1) + (a / w) * B(i - 1));
    row[2] = Narrow((a / w) * a + (c / w) * c + (b / w) * b);
    if (i + 1 < m) row[3] = Narrow((b / w) * A(i + 1) + (c / w) * B(i + 1));
    if (i + 2 < m) row[4] = Narrow((c / w) * A(i + 2));

    const double here = s.Step(i);
    const double next = s.Step(i + 1);
    if (i >= 1) row[1] = Narrow(static_cast<double>(row[1]) + here * static_cast<double>(oneSixth));
    row[2] = Narrow(static_cast<double>(row[2]) + (here + next) * static_cast<double>(oneThird));
    if (i + 1 < m) row[3] = Narrow(static_cast<double>(row[3]) + next * static_cast<double>(oneSixth));
    return row;
}

void SetSystem(Smoothing& s) {
    SetSecondDifferences(s);
    for (std::size_t i = 0; i < s.A.size(); ++i) {
        s.A[i] = BandRow(s, i);
        s.r[i] = Narrow(static_cast<double>(s.Q[i].a) * static_cast<double>(s.Y[i]) +
                        static_cast<double>(s.Q[i].c) * static_cast<double>(s.Y[i + 2]) +
                        static_cast<double>(s.Q[i].b) * static_cast<double>(s.Y[i + 1]));
    }
}

// Position of column j in the band of row i.
std::size_t InBand(std::size_t i, std::size_t j) { return j + diagonalOfBand - i; }

// Gaussian elimination within the band, without pivoting. Gives false for a pivot that is too small.
[[nodiscard]] bool Eliminate(Smoothing& s) {
    const std::size_t m = s.A.size();
    for (std::size_t k = 0; k + 1 < m; ++k) {
        const double pivot = static_cast<double>(s.A[k][diagonalOfBand]);
        if (!(std::abs(pivot) >= smallestPivot)) return false;
        const std::size_t end = std::min(k + 3, m);
        for (std::size_t i = k + 1; i < end; ++i) {
            const double below = static_cast<double>(s.A[i][InBand(i, k)]);
            for (std::size_t j = k + 1; j < end; ++j) {
                const double right = static_cast<double>(s.A[k][InBand(k, j)]);
                float& entry = s.A[i][InBand(i, j)];
                entry = Narrow(static_cast<double>(entry) - below * right / pivot);
            }
            s.r[i] = Narrow(static_cast<double>(s.r[i]) - static_cast<double>(s.r[k]) * below / pivot);
            s.A[i][InBand(i, k)] = 0;
        }
    }
    return true;
}

void BackSubstitute(Smoothing& s) {
    const std::size_t m = s.A.size();
    for (std::size_t k = m; k-- > 0;) {
        double sum = static_cast<double>(s.r[k]);
        if (k + 1 < m) sum -= static_cast<double>(s.A[k][3]) * static_cast<double>(s.r[k + 1]);
        if (k + 2 < m) sum -= static_cast<double>(s.A[k][4]) * static_cast<double>(s.r[k + 2]);
        s.r[k] = Narrow(sum / static_cast<double>(s.A[k][diagonalOfBand]));
    }
}

// Y - W Q u
void CorrectOrdinates(Smoothing& s) {
    const std::size_t m = s.Q.size();
    const auto term = [&](float coefficient, std::size_t i) {
        return static_cast<double>(coefficient) * static_cast<double>(s.r[i]) / s.w;
    };
    for (std::size_t p = 0; p < s.Y.size(); ++p) {
        double y = static_cast<double>(s.Y[p]);
        if (p >= 2) y -= term(s.Q[p - 2].c, p - 2);
        if (p >= 1 && p - 1 < m) y -= term(s.Q[p - 1].b, p - 1);
        if (p < m) y -= term(s.Q[p].a, p);
        s.Y[p] = Narrow(y);
    }
}

}  // namespace

int SmoothPoints(std::span<FunctionPoint> points, float smoothing) {
    const std::size_t n = points.size();
    if (n < 2) return ShowError(1081);
    if (n < 4) {
        for (FunctionPoint& point : points) point.slope = 0;
        return 1;
    }
    if (smoothing <= smallestSmoothing) return ShowError(1117);
    Smoothing s;
    if (!MakeSmoothing(s, n)) return 0;
    s.w = static_cast<double>(smoothing);
    const Span span = SpanOf(points);
    for (std::size_t i = 0; i < n; ++i) {
        s.X[i] = Narrow((static_cast<double>(points[i].x) - span.first) / span.length * 100);
        s.Y[i] = points[i].y;
    }
    for (std::size_t i = 0; i + 1 < n; ++i) {
        if (!(s.Step(i) > 0)) return ShowError(1117);
    }
    SetSystem(s);
    if (!Eliminate(s)) return ShowError(1117);
    BackSubstitute(s);
    CorrectOrdinates(s);
    for (std::size_t i = 0; i < n; ++i) {
        const bool inner = i > 0 && i + 1 < n;
        points[i] = {Narrow(static_cast<double>(s.X[i]) * span.length * 0.01 + span.first), s.Y[i],
                     inner ? s.r[i - 1] : 0.0F};
    }
    return 1;
}

int SmoothAndFit(std::span<const FunctionPoint> source, std::span<FunctionPoint> destination, float smoothing,
                 float weight) {
    if (source.data() != destination.data()) std::ranges::copy(source, destination.begin());
    (void)SmoothPoints(destination, smoothing);  // where it fails, the points stand as they are
    return FitSlopes(destination, weight);
}

}  // namespace kaldra
